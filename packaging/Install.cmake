# What `cmake --install` puts where, and what finds it again.

include(CMakePackageConfigHelpers)

set(LOGGER_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/liblogger)
set(LOGGER_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/liblogger)

set_target_properties(logger PROPERTIES EXPORT_NAME liblogger)
install(TARGETS logger KelUtilities
  EXPORT libloggerTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS loggerctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/ DESTINATION ${LOGGER_INCLUDE_DIR} FILES_MATCHING PATTERN "*.h")
install(DIRECTORY LibKelUtilities/include/LibKelUtilities DESTINATION ${LOGGER_INCLUDE_DIR}
  FILES_MATCHING PATTERN "*.h")

install(FILES share/liblogger/log.xsl Src/Configuration/liblogger.xsd
  DESTINATION ${CMAKE_INSTALL_DATADIR}/liblogger)
install(FILES share/liblogger/lnav/liblogger.json
  DESTINATION ${CMAKE_INSTALL_DATADIR}/liblogger/lnav)
install(FILES share/liblogger/logrotate/loggerctl-serve
  DESTINATION ${CMAKE_INSTALL_DATADIR}/liblogger/logrotate)
install(FILES share/liblogger/wireshark/liblogger.lua
  DESTINATION ${CMAKE_INSTALL_DATADIR}/liblogger/wireshark)

configure_file(packaging/loggerctl-serve.service.in loggerctl-serve.service @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/loggerctl-serve.service
  DESTINATION lib/systemd/system)

install(EXPORT libloggerTargets NAMESPACE liblogger:: DESTINATION ${LOGGER_PACKAGE_DIR})
configure_package_config_file(packaging/libloggerConfig.cmake.in libloggerConfig.cmake
  INSTALL_DESTINATION ${LOGGER_PACKAGE_DIR})
write_basic_package_version_file(libloggerConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/libloggerConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/libloggerConfigVersion.cmake
  DESTINATION ${LOGGER_PACKAGE_DIR})

# Relative to the .pc file itself, so that an installed tree can be moved.
file(RELATIVE_PATH LOGGER_PC_PREFIX
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(packaging/liblogger.pc.in liblogger.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/liblogger.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
