# Installs the library, moves what was installed somewhere else, and builds and runs a consumer there, with CMake and with
# pkg-config. Needs SOURCE and BUILD (Morvane's folders), LIBDIR, GENERATOR, COMPILER, FLAGS (the compiler's), PKG_CONFIG
# and WORK.

include("${CMAKE_CURRENT_LIST_DIR}/../expect.cmake")

function(step)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${ARGN}\nended with ${result}:\n${output}")
    endif()
endfunction()

function(expect_answer consumer)
    run(0 "${consumer}")
    if(NOT out STREQUAL "1 <answer>forty-two</answer>\n")
        fault("${consumer} said: ${out}")
    endif()
endfunction()

file(REMOVE_RECURSE "${WORK}")
step("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/installed")
file(RENAME "${WORK}/installed" "${WORK}/moved")
set(consumer "${CMAKE_CURRENT_LIST_DIR}/consumer")

# find_package(Morvane)
step("${CMAKE_COMMAND}" -S "${consumer}" -B "${WORK}/cmake" -G "${GENERATOR}" "-DCMAKE_CXX_COMPILER=${COMPILER}"
    "-DCMAKE_CXX_FLAGS=${FLAGS}" "-DCMAKE_PREFIX_PATH=${WORK}/moved")
step("${CMAKE_COMMAND}" --build "${WORK}/cmake")
expect_answer("${WORK}/cmake/consumer")

# pkg-config
set(ENV{PKG_CONFIG_PATH} "${WORK}/moved/${LIBDIR}/pkgconfig")
run(0 "${PKG_CONFIG}" --cflags --libs morvane)
separate_arguments(flags UNIX_COMMAND "${FLAGS} ${out}")
step("${COMPILER}" -std=c++20 "${consumer}/consumer.cpp" -o "${WORK}/consumer" ${flags} "-Wl,-rpath,${WORK}/moved/${LIBDIR}")
expect_answer("${WORK}/consumer")

# The same file where libraries lie one folder deeper.
step("${CMAKE_COMMAND}" -S "${SOURCE}" -B "${WORK}/deeper" -G "${GENERATOR}" "-DCMAKE_CXX_COMPILER=${COMPILER}"
    -DMORVANE_BUILD_TESTS=OFF -DMORVANE_BUILD_EXAMPLES=OFF -DCMAKE_INSTALL_LIBDIR=lib/x86_64-linux-gnu)
set(ENV{PKG_CONFIG_PATH} "${WORK}/moved/lib/x86_64-linux-gnu/pkgconfig")
file(COPY "${WORK}/deeper/morvane.pc" DESTINATION "$ENV{PKG_CONFIG_PATH}")
foreach(variable IN ITEMS "libdir=lib/x86_64-linux-gnu" "includedir=include")
    string(REGEX MATCH "(.*)=(.*)" ignored "${variable}")
    set(wanted "${WORK}/moved/${CMAKE_MATCH_2}")
    run(0 "${PKG_CONFIG}" --variable=${CMAKE_MATCH_1} morvane)
    string(STRIP "${out}" told)
    cmake_path(NORMAL_PATH told)
    if(NOT told STREQUAL wanted)
        fault("pkg-config tells ${told} instead of ${wanted}")
    endif()
endforeach()
