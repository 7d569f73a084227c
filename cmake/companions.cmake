# The command-line companions, pindle_export and pindle_sync, and the libraries they need:
# libical, libcurl, pugixml and nlohmann-json. Without them the program is built alone, with a
# note saying so; the test suites need the companions, so there the libraries are required.
include(GNUInstallDirs)
if(PINDLE_BUILD_TESTS)
  set(companion_need REQUIRED)
endif()
find_package(PkgConfig ${companion_need})
if(PkgConfig_FOUND)
  pkg_check_modules(LIBICAL ${companion_need} IMPORTED_TARGET libical)
  pkg_check_modules(LIBCURL ${companion_need} IMPORTED_TARGET libcurl)
  pkg_check_modules(PUGIXML ${companion_need} IMPORTED_TARGET pugixml)
endif()
find_package(nlohmann_json 3 ${companion_need} QUIET)
if(LIBICAL_FOUND AND LIBCURL_FOUND AND PUGIXML_FOUND AND nlohmann_json_FOUND)
  include(cmake/calendar.cmake)
  include(cmake/export.cmake)
  include(cmake/sync.cmake)
else()
  message(STATUS "pindle_export and pindle_sync are not built: libical, libcurl, pugixml or "
                 "nlohmann-json is missing (scripts/install-deps.sh --companions installs them)")
endif()
