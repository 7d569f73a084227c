# FLTK through fltk-config, the script every FLTK installation carries, as the imported target
# FLTK::fltk. Debian's exported CMake targets would do too, but they also import the fluid
# designer, a separate package this program never runs, and fail without it.
find_program(FLTK_CONFIG fltk-config REQUIRED)
execute_process(COMMAND ${FLTK_CONFIG} --api-version
  OUTPUT_VARIABLE fltk_api OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(NOT fltk_api MATCHES "^1\\.")
  message(FATAL_ERROR "FLTK 1.x is needed; ${FLTK_CONFIG} reports ${fltk_api}")
endif()
execute_process(COMMAND ${FLTK_CONFIG} --includedir
  OUTPUT_VARIABLE fltk_include OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${FLTK_CONFIG} --ldflags
  OUTPUT_VARIABLE fltk_ldflags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(fltk_ldflags UNIX_COMMAND "${fltk_ldflags}")
add_library(FLTK::fltk INTERFACE IMPORTED)
target_include_directories(FLTK::fltk INTERFACE ${fltk_include})
target_link_libraries(FLTK::fltk INTERFACE ${fltk_ldflags})
message(STATUS "FLTK ${fltk_api} from ${FLTK_CONFIG}")
