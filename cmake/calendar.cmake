# What the two companions share, below both of them: the mapping between a to-do and a VTODO
# (with libical) and the command line (on getopt_long). Each companion's library links these and
# the data layer, never the other companion's, so neither can include the other's headers.
add_library(pindle_calendar STATIC
  src/calendar/todo_view.cxx
  src/calendar/ical_text.cxx
  src/calendar/vtodo_fields.cxx
  src/calendar/server_todo.cxx)
target_include_directories(pindle_calendar PUBLIC src/calendar)
target_link_libraries(pindle_calendar PUBLIC pindle_data PkgConfig::LIBICAL)

add_library(pindle_cli STATIC src/cli/command_line.cxx src/cli/folder_check.cxx)
target_include_directories(pindle_cli PUBLIC src/cli)

if(PINDLE_BUILD_TESTS)
  file(GLOB calendar_test_sources CONFIGURE_DEPENDS tests/calendar/*.cxx)
  add_executable(calendar_tests ${calendar_test_sources})
  target_include_directories(calendar_tests PRIVATE tests)
  target_link_libraries(calendar_tests PRIVATE pindle_calendar GTest::gtest_main)
  gtest_discover_tests(calendar_tests DISCOVERY_MODE PRE_TEST)
  add_executable(cli_tests tests/cli/command_line_test.cxx)
  target_link_libraries(cli_tests PRIVATE pindle_cli GTest::gtest_main)
  gtest_discover_tests(cli_tests DISCOVERY_MODE PRE_TEST)
endif()
