# Export tool: pindle_export writes the to-dos as CSV, iCalendar or JSON. The writers form a
# library of their own so the unit tests drive them without the command line; no FLTK here.
add_library(pindle_export_core STATIC
  src/export/utf8_text.cxx
  src/export/todo_view.cxx
  src/export/csv_writer.cxx
  src/export/ics_writer.cxx
  src/export/json_writer.cxx
  src/export/export_options.cxx)
target_include_directories(pindle_export_core PUBLIC src/export)
# libical, the one iCalendar path: the writer builds its VTODOs with it, and pindle_sync builds
# and reads the same VTODOs through that writer and libical's parser.
target_link_libraries(pindle_export_core PUBLIC pindle_data PkgConfig::LIBICAL)

add_executable(pindle_export src/export/main.cxx)
target_link_libraries(pindle_export PRIVATE pindle_export_core)

if(PINDLE_BUILD_TESTS)
  add_executable(export_tests
    tests/export/utf8_text_test.cxx
    tests/export/writers_test.cxx
    tests/export/export_options_test.cxx)
  target_include_directories(export_tests PRIVATE tests)
  target_link_libraries(export_tests PRIVATE pindle_export_core GTest::gtest_main)
  gtest_discover_tests(export_tests DISCOVERY_MODE PRE_TEST)

  # Debian's interpreter, where python3-icalendar lives, rather than whichever is first on PATH.
  find_program(PINDLE_SYSTEM_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
  if(NOT PINDLE_SYSTEM_PYTHON)
    message(FATAL_ERROR "/usr/bin/python3 not found: run scripts/install-deps.sh")
  endif()
  foreach(script golden roundtrip cli)
    add_test(NAME export_${script}
      COMMAND ${PINDLE_SYSTEM_PYTHON} ${CMAKE_SOURCE_DIR}/tests/export/${script}_test.py
              $<TARGET_FILE:pindle_export>)
  endforeach()
endif()

install(TARGETS pindle_export RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES packaging/pindle_export.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
