# The manual's pages that list what a configuration can say. The other pages are in docs/man as they stand.

set(LOGGER_MANUAL_PAGES docs/man/liblogger-ini.5 docs/man/liblogger-xml.5)
if(NOT LOGGER_SANITIZE)  # Installed programs have no sanitizer.
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  foreach(page ${LOGGER_MANUAL_PAGES})
    set(template ${PROJECT_SOURCE_DIR}/${page}.in)
    set(fill ${PROJECT_SOURCE_DIR}/packaging/fill-manual-page)
    add_custom_command(OUTPUT ${page}
      COMMAND Python3::Interpreter ${fill} $<TARGET_FILE:loggerctl> ${template} > ${page}
      DEPENDS loggerctl ${template} ${fill}
      VERBATIM)
  endforeach()
  add_custom_target(loggerctl_manual ALL DEPENDS ${LOGGER_MANUAL_PAGES})
endif()
