# The manual's pages that list what a configuration can say. The other pages are in docs/man as they stand.

set(LOGGER_MANUAL_PAGES docs/man/liblogger-ini.5 docs/man/liblogger-xml.5)
if(NOT LOGGER_SANITIZE)  # What users install has no sanitizer in it.
  foreach(page ${LOGGER_MANUAL_PAGES})
    set(template ${PROJECT_SOURCE_DIR}/${page}.in)
    set(fill ${PROJECT_SOURCE_DIR}/packaging/FillManualPage.cmake)
    add_custom_command(OUTPUT ${page}
      COMMAND ${CMAKE_COMMAND} -D LOGGERCTL=$<TARGET_FILE:loggerctl> -D TEMPLATE=${template}
        -D PAGE=${PROJECT_BINARY_DIR}/${page} -P ${fill}
      DEPENDS loggerctl ${template} ${fill}
      VERBATIM)
  endforeach()
  add_custom_target(loggerctl_manual ALL DEPENDS ${LOGGER_MANUAL_PAGES})
endif()
