# The files that `cmake --install` installs, and their CMake and pkg-config files. Each component is a
# Debian package of its own, see DebianPackages.cmake.

include(CMakePackageConfigHelpers)

set(LOGGER_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/liblogger)
set(LOGGER_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/liblogger)

set_target_properties(logger PROPERTIES EXPORT_NAME liblogger)
install(TARGETS logger
  EXPORT libloggerTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)

install(DIRECTORY include/ DESTINATION ${LOGGER_INCLUDE_DIR}
  COMPONENT development FILES_MATCHING PATTERN "*.h")
install(DIRECTORY LibKelUtilities/include/LibKelUtilities DESTINATION ${LOGGER_INCLUDE_DIR}
  COMPONENT development FILES_MATCHING PATTERN "*.h")

# Libraries that programs link as well: liblogger.so brings them along, liblogger.a does not.
set(LOGGER_FIND_LIBXML2 "")
set(LOGGER_PC_LIBS "")
if(NOT LOGGER_SHARED)
  set(LOGGER_FIND_LIBXML2 "find_dependency(LibXml2)")
  set(LOGGER_PC_LIBS " -lxml2 -pthread")
endif()

install(EXPORT libloggerTargets NAMESPACE liblogger:: DESTINATION ${LOGGER_PACKAGE_DIR}
  COMPONENT development)
configure_package_config_file(cmake/libloggerConfig.cmake.in libloggerConfig.cmake
  INSTALL_DESTINATION ${LOGGER_PACKAGE_DIR})
write_basic_package_version_file(libloggerConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/libloggerConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/libloggerConfigVersion.cmake
  DESTINATION ${LOGGER_PACKAGE_DIR} COMPONENT development)

# Relative to the .pc file itself, so that an installed tree can be moved.
file(RELATIVE_PATH LOGGER_PC_PREFIX
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(packaging/liblogger.pc.in liblogger.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/liblogger.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# In the same folders as here, which the links between them lead to.
install(FILES README.md CHANGELOG.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
  PATTERN man EXCLUDE
  PATTERN Doxyfile EXCLUDE
  PATTERN "*.json" EXCLUDE)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
  PATTERN CMakeLists.txt EXCLUDE)

if(NOT LOGGER_BUILD_TOOLS)
  return()
endif()
install(TARGETS loggerctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(FILES share/liblogger/log.xsl Src/Configuration/liblogger.xsd
  DESTINATION ${CMAKE_INSTALL_DATADIR}/liblogger COMPONENT tools)
install(DIRECTORY share/liblogger/lnav share/liblogger/logrotate share/liblogger/wireshark
  DESTINATION ${CMAKE_INSTALL_DATADIR}/liblogger COMPONENT tools)
if(NOT LOGGER_SANITIZE)
  install(FILES ${PROJECT_BINARY_DIR}/tools/loggerctl.bash RENAME loggerctl
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
endif()
foreach(section 1 5 7)  # Written by hand, or made by the build.
  install(DIRECTORY docs/man/ ${CMAKE_CURRENT_BINARY_DIR}/docs/man/
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section}
    COMPONENT tools OPTIONAL FILES_MATCHING PATTERN "*.${section}")
endforeach()
configure_file(packaging/loggerctl-serve.service.in loggerctl-serve.service @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/loggerctl-serve.service
  DESTINATION lib/systemd/system COMPONENT tools)
