# The library, its headers, and what CMake and pkg-config need to find them.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS kalvobase EXPORT KalvoBaseTargets
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${kalvobase_headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kalvobase)
install(EXPORT KalvoBaseTargets NAMESPACE KalvoBase::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/KalvoBase)
configure_package_config_file(cmake/KalvoBaseConfig.cmake.in KalvoBaseConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/KalvoBase)
write_basic_package_version_file(KalvoBaseConfigVersion.cmake COMPATIBILITY SameMajorVersion)
# The prefix is relative to the file, so that the installed tree can be moved.
file(RELATIVE_PATH kalvobase_prefix_from_pc
     ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/kalvobase.pc.in kalvobase.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/KalvoBaseConfig.cmake
              ${PROJECT_BINARY_DIR}/KalvoBaseConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/KalvoBase)
install(FILES ${PROJECT_BINARY_DIR}/kalvobase.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
