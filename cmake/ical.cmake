# libical, the one iCalendar path: pindle_export's writer builds its VTODOs with it, and
# pindle_sync builds and reads the same VTODOs through that writer and libical's parser.
find_package(PkgConfig REQUIRED)
pkg_check_modules(LIBICAL REQUIRED IMPORTED_TARGET libical)
target_link_libraries(pindle_export_core PUBLIC PkgConfig::LIBICAL)
