# Export tool: pindle_export writes the to-dos as CSV, iCalendar or JSON. The writers form a
# library of their own so the unit tests drive them without the command line; no FLTK here.
add_library(pindle_export_core STATIC
  src/export/csv_writer.cxx
  src/export/ics_writer.cxx
  src/export/json_writer.cxx
  src/export/export_options.cxx)
target_include_directories(pindle_export_core PUBLIC src/export)
target_link_libraries(pindle_export_core PUBLIC pindle_calendar PRIVATE pindle_cli)

add_executable(pindle_export src/export/main.cxx)
target_link_libraries(pindle_export PRIVATE pindle_export_core pindle_cli)

if(PINDLE_BUILD_TESTS)
  pindle_unit_tests(export pindle_export_core)
  pindle_man_page_test(pindle_export)
  add_test(NAME export COMMAND ${PINDLE_SYSTEM_PYTHON} ${CMAKE_SOURCE_DIR}/tests/export/export_test.py
                                $<TARGET_FILE:pindle_export>)
endif()

install(TARGETS pindle_export RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES packaging/pindle_export.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
