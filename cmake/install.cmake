# Installation: the program, the menu launcher, desktop entry, icon, AppStream entry and manual
# pages. The 48x48 icon is drawn from the SVG at build time, so no image blob is kept in git;
# without rsvg-convert the build goes on and installs the scalable icon alone.
include(GNUInstallDirs)
set(pindle_app_id org.pindle.PindleToDo)
find_program(PINDLE_RSVG_CONVERT rsvg-convert)
if(PINDLE_RSVG_CONVERT)
  add_custom_command(OUTPUT pindle_todo.png
    COMMAND ${PINDLE_RSVG_CONVERT} -w 48 -h 48 -o pindle_todo.png
            ${CMAKE_SOURCE_DIR}/packaging/pindle_todo.svg
    DEPENDS packaging/pindle_todo.svg
    COMMENT "Drawing the 48x48 icon")
  add_custom_target(pindle_icon ALL DEPENDS pindle_todo.png)
  install(FILES ${CMAKE_BINARY_DIR}/pindle_todo.png
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/48x48/apps)
else()
  message(STATUS "rsvg-convert (librsvg2-bin) not found: only the scalable icon is installed")
endif()

install(TARGETS pindle_todo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(PROGRAMS packaging/pindle_todo-launcher DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES packaging/${pindle_app_id}.desktop
  DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES packaging/${pindle_app_id}.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES packaging/pindle_todo.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES packaging/pindle_todo.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
