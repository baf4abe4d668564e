# The Debian packages, which scripts/package makes.

set(LOGGER_LIBRARY_PACKAGE liblogger${PROJECT_VERSION_MAJOR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME liblogger)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL library development tools documentation)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_BINARY_DIR}/CompleteDebianPackages.cmake)
configure_file(packaging/CompleteDebianPackages.cmake.in CompleteDebianPackages.cmake @ONLY)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SOURCE liblogger)
# The library's owner sets the real maintainer, here and in debian/changelog.
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "liblogger maintainers <maintainers@liblogger.invalid>")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

# The first line of a package's description, and what it says of itself after what all have in common.
macro(logger_describe component synopsis contents)
  set(CPACK_COMPONENT_${component}_DESCRIPTION "${synopsis}
Applications log printf-style messages at numeric levels through named
handlers. Events flow down a tree of handlers, each with its own level
filter, to the console, to files, to files that roll over by size, to XML
documents, and to a log server in another process.

${contents}")
endmacro()

# CPack has no variable for the field that follows a package's section here.
macro(logger_section component section multiArch)
  set(CPACK_DEBIAN_${component}_PACKAGE_SECTION "${section}\nMulti-Arch: ${multiArch}")
endmacro()

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${LOGGER_LIBRARY_PACKAGE})
logger_section(LIBRARY libs same)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# The trigger calls ldconfig. CPack would add scripts that do it as well, but for a package that has
# its own; these two do not exist, and so there are none. It warns of that.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/debian/triggers
  ${PROJECT_SOURCE_DIR}/packaging/debian/none/postinst
  ${PROJECT_SOURCE_DIR}/packaging/debian/none/postrm
  ${CMAKE_CURRENT_BINARY_DIR}/debian/symbols)
logger_describe(LIBRARY "logging library for the processes of a system"
"This package contains the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liblogger-dev)
logger_section(DEVELOPMENT libdevel same)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS liblogger-doc)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
logger_describe(DEVELOPMENT "logging library for the processes of a system - development files"
"This package contains the headers, and what CMake and pkg-config need to
find them.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME liblogger-tools)
logger_section(TOOLS utils foreign)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/Src)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS xsltproc)
set(CPACK_COMPONENT_TOOLS_DEPENDS library)
logger_describe(TOOLS "logging library for the processes of a system - command line tools"
"This package contains loggerctl, the systemd unit of the log server, the
schema of configuration documents, and the stylesheet of XML logs.")

set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME liblogger-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
logger_section(DOCUMENTATION doc foreign)
logger_describe(DOCUMENTATION "logging library for the processes of a system - documentation"
"This package contains the guides and the examples.")

include(CPack)
