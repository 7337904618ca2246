# cmake --install: the library, its public headers, find_package(Morvane) and a pkg-config file. What is installed finds its
# own parts from where it lies, so that the whole can be moved.

include(CMakePackageConfigHelpers)

set(morvane_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Morvane")

install(TARGETS MorvaneU EXPORT MorvaneTargets
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(EXPORT MorvaneTargets NAMESPACE Morvane:: DESTINATION "${morvane_package_dir}")

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/MorvaneConfig.cmake.in" "${PROJECT_BINARY_DIR}/MorvaneConfig.cmake"
    INSTALL_DESTINATION "${morvane_package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/MorvaneConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/MorvaneConfig.cmake" "${PROJECT_BINARY_DIR}/MorvaneConfigVersion.cmake"
    DESTINATION "${morvane_package_dir}")

# The folders of the pkg-config file, told from its own place where they lie under the prefix, else as they are.
set(morvane_pc_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
cmake_path(IS_ABSOLUTE morvane_pc_dir morvane_pc_is_absolute)
if(morvane_pc_is_absolute)
    set(morvane_pc_prefix "${CMAKE_INSTALL_PREFIX}")
else()
    cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}/${morvane_pc_dir}"
        OUTPUT_VARIABLE morvane_pc_up)
    set(morvane_pc_prefix "\${pcfiledir}/${morvane_pc_up}")
endif()
foreach(folder LIBDIR INCLUDEDIR)
    set(morvane_pc_${folder} "\${prefix}")
    cmake_path(APPEND morvane_pc_${folder} "${CMAKE_INSTALL_${folder}}")
endforeach()
configure_file("${PROJECT_SOURCE_DIR}/cmake/morvane.pc.in" "${PROJECT_BINARY_DIR}/morvane.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/morvane.pc" DESTINATION "${morvane_pc_dir}")
