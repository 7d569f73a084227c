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
  pindle_unit_tests(calendar pindle_calendar)
  pindle_unit_tests(cli pindle_cli)
endif()
