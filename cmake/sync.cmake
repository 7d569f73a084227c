# pindle_sync: two-way sync of a data folder with a CalDAV task collection. The classes form a
# library of their own so that the unit tests and the fuzz target use them without the command
# line; it links the data layer and the calendar mapping, never the export or the interface.

set(pindle_sync_sources
  src/sync/collection_check.cxx
  src/sync/collection_finder.cxx
  src/sync/collection_url.cxx
  src/sync/credentials.cxx
  src/sync/dav_client.cxx
  src/sync/dav_xml.cxx
  src/sync/field_merge.cxx
  src/sync/local_matcher.cxx
  src/sync/progress.cxx
  src/sync/record_digest.cxx
  src/sync/keyring.cxx
  src/sync/remote_scan.cxx
  src/sync/sync_options.cxx
  src/sync/sync_settings.cxx
  src/sync/sync_setup.cxx
  src/sync/sync_session.cxx
  src/sync/sync_state.cxx
  src/sync/task_writer.cxx)
add_library(pindle_sync_core STATIC ${pindle_sync_sources})
target_include_directories(pindle_sync_core PUBLIC src/sync)
target_link_libraries(pindle_sync_core PUBLIC pindle_calendar PkgConfig::LIBCURL
                      PkgConfig::PUGIXML nlohmann_json::nlohmann_json PRIVATE pindle_cli
                      PkgConfig::LIBSECRET PkgConfig::TOMLPLUSPLUS)

add_executable(pindle_sync src/sync/main.cxx)
target_link_libraries(pindle_sync PRIVATE pindle_sync_core)
install(TARGETS pindle_sync RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES packaging/pindle_sync.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The units that run the sync by itself (systemctl --user enable --now pindle-sync.timer
# pindle-sync.path).
pindle_install_user_units(pindle-sync)

if(PINDLE_BUILD_TESTS)
  pindle_unit_tests(sync pindle_sync_core)

  # The settings and the keyring: the script runs itself in a D-Bus session of its own, with
  # a real gnome-keyring-daemon.
  add_test(NAME sync_settings
    COMMAND ${PINDLE_SYSTEM_PYTHON} ${CMAKE_SOURCE_DIR}/tests/sync/settings_test.py
            $<TARGET_FILE:pindle_sync>)
  set_tests_properties(sync_settings PROPERTIES TIMEOUT 300)
  # Against real servers, each started by its suite on a free loopback port, with the caldav
  # module as a second device: the same table of cases against each server (test name = the
  # suite's classes); the failures, the open window and the thousand to-dos against Radicale
  # alone. They carry the label "server", which test.sh --sanitize leaves out, so that CI runs
  # them once.
  set(sync_programs $<TARGET_FILE:pindle_sync> $<TARGET_FILE:pindle_todo>)
  foreach(suite radicale=Radicale,Failures,BesideTheWindow,UpgradedState
                radicale_https=RadicaleOverHttps
                xandikos=Xandikos xandikos_propfind=XandikosWithoutSyncCollection cyrus=Cyrus
                thousand_todos=Scale)
    string(REGEX REPLACE "=.*" "" name ${suite})
    string(REGEX REPLACE ".*=" "" classes ${suite})
    string(REPLACE "," ";" classes ${classes})
    add_test(NAME sync_${name}
      COMMAND ${PINDLE_SYSTEM_PYTHON} ${CMAKE_SOURCE_DIR}/tests/sync/servers_test.py
              ${sync_programs} ${classes})
    # A server the machine cannot start (Cyrus needs root, to run as its own user) skips.
    set_tests_properties(sync_${name} PROPERTIES TIMEOUT 600 LABELS server SKIP_RETURN_CODE 77)
  endforeach()
  # A small hostile server of our own: in every run, the sanitizers' too.
  add_test(NAME sync_hostile_server
    COMMAND ${PINDLE_SYSTEM_PYTHON} ${CMAKE_SOURCE_DIR}/tests/sync/hostile_server_test.py
            ${sync_programs})
  set_tests_properties(sync_hostile_server PROPERTIES TIMEOUT 600)
  pindle_man_page_test(pindle_sync)
endif()

# The fuzz target for what a server sends: multistatus XML and the iCalendar inside it, mapped
# onto a record. Its own instrumented copy of the code it reaches.
if(PINDLE_FUZZ)
  set(sync_fuzz_flags -fsanitize=address,undefined -fno-sanitize-recover=all
      -fno-omit-frame-pointer)
  add_executable(server_reply_fuzzer fuzz/server_reply_fuzzer.cxx
    src/sync/dav_xml.cxx src/calendar/server_todo.cxx src/calendar/ical_text.cxx)
  target_include_directories(server_reply_fuzzer PRIVATE src/sync src/calendar)
  target_compile_options(server_reply_fuzzer PRIVATE ${sync_fuzz_flags} -fsanitize=fuzzer)
  target_link_options(server_reply_fuzzer PRIVATE ${sync_fuzz_flags} -fsanitize=fuzzer)
  target_link_libraries(server_reply_fuzzer PRIVATE pindle_data_fuzz PkgConfig::LIBICAL
                        PkgConfig::PUGIXML)
endif()
