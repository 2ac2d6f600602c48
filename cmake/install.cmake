# Installs the library, its public headers, and what find_package(Passband) and pkg-config passband read.
include(CMakePackageConfigHelpers)

install(TARGETS passband EXPORT PassbandTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT PassbandTargets NAMESPACE Passband:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Passband)

configure_package_config_file(cmake/PassbandConfig.cmake.in ${PROJECT_BINARY_DIR}/PassbandConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Passband)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/PassbandConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/PassbandConfig.cmake ${PROJECT_BINARY_DIR}/PassbandConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Passband)

# The file names its prefix relative to itself, so an installed tree can be moved.
file(RELATIVE_PATH PASSBAND_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" PASSBAND_PC_PREFIX "${PASSBAND_PC_PREFIX}")
configure_file(cmake/passband.pc.in ${PROJECT_BINARY_DIR}/passband.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/passband.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
