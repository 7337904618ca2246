# The options that every target of this project is compiled with.

set(CMAKE_CXX_EXTENSIONS OFF)

add_library(morvane_options INTERFACE)
target_compile_features(morvane_options INTERFACE cxx_std_20)
target_compile_options(morvane_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)

if(MORVANE_CHECKED)
    target_compile_definitions(morvane_options INTERFACE MORVANE_CHECKED)
endif()
if(MORVANE_SANITIZE)
    list(JOIN MORVANE_SANITIZE "," morvane_sanitizers)
    target_compile_options(morvane_options INTERFACE -fsanitize=${morvane_sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(morvane_options INTERFACE -fsanitize=${morvane_sanitizers})
endif()
