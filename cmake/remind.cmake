# pindle_remind: announces the due to-dos on the desktop through the notification service on the
# session bus (GDBus, in GIO). The classes form a library of their own so that the unit tests
# drive them without the command line; it links the data layer and the command line, never the
# interface or another companion.
add_library(pindle_remind_core STATIC
  src/remind/announced_today.cxx
  src/remind/desktop_notifier.cxx
  src/remind/due_list.cxx
  src/remind/notification_text.cxx
  src/remind/remind_options.cxx
  src/remind/window_start.cxx)
target_include_directories(pindle_remind_core PUBLIC src/remind)
target_link_libraries(pindle_remind_core PUBLIC pindle_data PkgConfig::GIO PRIVATE pindle_cli
                      nlohmann_json::nlohmann_json)

add_executable(pindle_remind src/remind/main.cxx)
target_link_libraries(pindle_remind PRIVATE pindle_remind_core pindle_cli)
install(TARGETS pindle_remind RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES packaging/pindle_remind.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The units that run it by itself, beside the sync's.
pindle_install_user_units(pindle-remind)

if(PINDLE_BUILD_TESTS)
  pindle_unit_tests(remind pindle_remind_core)
  # Against dunst on a display and a session bus of the test's own.
  add_test(NAME remind_desktop
    COMMAND ${PINDLE_SYSTEM_PYTHON} ${CMAKE_SOURCE_DIR}/tests/remind/desktop_test.py
            $<TARGET_FILE:pindle_remind>)
  set_tests_properties(remind_desktop PROPERTIES TIMEOUT 300)
  pindle_man_page_test(pindle_remind)
endif()
