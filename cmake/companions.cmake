# The command-line companions, pindle_export, pindle_sync and pindle_remind, and the libraries
# they need: libical, libcurl, pugixml, nlohmann-json, libsecret (the desktop's keyring), toml++
# (the sync's settings file) and GIO (the reminder's D-Bus). Without them the program is built
# alone, with a note saying so; the test suites need the companions, so there the libraries are
# required.
include(GNUInstallDirs)
if(PINDLE_BUILD_TESTS)
  set(companion_need REQUIRED)
endif()
find_package(PkgConfig ${companion_need})
if(PkgConfig_FOUND)
  pkg_check_modules(LIBICAL ${companion_need} IMPORTED_TARGET libical)
  pkg_check_modules(LIBCURL ${companion_need} IMPORTED_TARGET libcurl)
  pkg_check_modules(PUGIXML ${companion_need} IMPORTED_TARGET pugixml)
  pkg_check_modules(LIBSECRET ${companion_need} IMPORTED_TARGET libsecret-1)
  pkg_check_modules(TOMLPLUSPLUS ${companion_need} IMPORTED_TARGET tomlplusplus)
  pkg_check_modules(GIO ${companion_need} IMPORTED_TARGET gio-2.0)
endif()
find_package(nlohmann_json 3 ${companion_need} QUIET)

# A companion's systemd user units: NAME.service from its template, NAME.timer, NAME.path and
# NAME-soon.timer. Units live under lib/ whatever the system's library folder is called, and
# each user who wants them enables them.
function(pindle_install_user_units name)
  configure_file(packaging/systemd/${name}.service.in ${name}.service @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/${name}.service packaging/systemd/${name}.timer
                packaging/systemd/${name}.path packaging/systemd/${name}-soon.timer
          DESTINATION lib/systemd/user)
endfunction()
if(LIBICAL_FOUND AND LIBCURL_FOUND AND PUGIXML_FOUND AND nlohmann_json_FOUND AND LIBSECRET_FOUND
   AND TOMLPLUSPLUS_FOUND)
  include(cmake/calendar.cmake)
  include(cmake/export.cmake)
  include(cmake/sync.cmake)
  if(GIO_FOUND)
    include(cmake/remind.cmake)
  else()
    message(STATUS "pindle_remind is not built: GIO is missing (libglib2.0-dev)")
  endif()
else()
  message(STATUS "pindle_export and pindle_sync are not built: libical, libcurl, pugixml, "
                 "nlohmann-json, libsecret or toml++ is missing (scripts/install-deps.sh "
                 "--companions installs them)")
endif()
