# cmake --install: the library, its public headers, find_package(Morvane) and a pkg-config file.

include(CMakePackageConfigHelpers)

install(TARGETS MorvaneU EXPORT MorvaneTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT MorvaneTargets NAMESPACE Morvane:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Morvane)

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/MorvaneConfig.cmake.in" "${PROJECT_BINARY_DIR}/MorvaneConfig.cmake"
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Morvane)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/MorvaneConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/MorvaneConfig.cmake" "${PROJECT_BINARY_DIR}/MorvaneConfigVersion.cmake"
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Morvane)

configure_file("${PROJECT_SOURCE_DIR}/cmake/morvane.pc.in" "${PROJECT_BINARY_DIR}/morvane.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/morvane.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
