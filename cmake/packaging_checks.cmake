# Checks of what the install ships: the desktop and AppStream entries and the manual pages
# validated, a staged install complete, and the launcher's choice of data folder.
add_test(NAME desktop_entry_valid
  COMMAND desktop-file-validate ${CMAKE_SOURCE_DIR}/packaging/${pindle_app_id}.desktop)
add_test(NAME metainfo_valid
  COMMAND appstreamcli validate --no-net
          ${CMAKE_SOURCE_DIR}/packaging/${pindle_app_id}.metainfo.xml)
# desktop-file-validate prints hints but still succeeds; any output at all fails these.
set_tests_properties(desktop_entry_valid PROPERTIES FAIL_REGULAR_EXPRESSION ".")
pindle_man_page_test(pindle_todo)
add_test(NAME install_staged
  COMMAND bash ${CMAKE_SOURCE_DIR}/tests/packaging/install_test.sh ${CMAKE_COMMAND}
          ${CMAKE_BINARY_DIR} ${pindle_app_id})
add_test(NAME launcher_data_folder
  COMMAND sh ${CMAKE_SOURCE_DIR}/tests/packaging/launcher_test.sh
          ${CMAKE_SOURCE_DIR}/packaging/pindle_todo-launcher)
