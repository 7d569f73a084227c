# FLTK through fltk-config, the script every FLTK installation carries, as the imported target
# FLTK::fltk: 1.3 where it is installed alone (Debian 12), 1.4 where Debian carries it (13).
# Debian's exported CMake targets would do too, but they also import the fluid designer, a
# separate package this program never runs, and fail without it.
find_program(FLTK_CONFIG fltk-config REQUIRED)
execute_process(COMMAND ${FLTK_CONFIG} --api-version
  OUTPUT_VARIABLE fltk_api OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(NOT fltk_api MATCHES "^1\\.[34]$")
  message(FATAL_ERROR "FLTK 1.3 or 1.4 is needed; ${FLTK_CONFIG} reports ${fltk_api}")
endif()
# 1.4's headers reach into cairo's, which only --cxxflags names (its --includedir is empty).
execute_process(COMMAND ${FLTK_CONFIG} --cxxflags
  OUTPUT_VARIABLE fltk_cxxflags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${FLTK_CONFIG} --ldflags
  OUTPUT_VARIABLE fltk_ldflags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(fltk_cxxflags UNIX_COMMAND "${fltk_cxxflags}")
separate_arguments(fltk_ldflags UNIX_COMMAND "${fltk_ldflags}")
# Folders become the target's include directories, which an imported target's users see as
# system headers: the toolkit's own warnings stay out of this project's -Wall -Wextra. 1.3 also
# names cairo's folders, which only its optional cairo layer needs and which may be missing.
set(fltk_include)
set(fltk_options)
foreach(flag IN LISTS fltk_cxxflags)
  if(flag MATCHES "^-I(.+)")
    if(IS_DIRECTORY ${CMAKE_MATCH_1})
      list(APPEND fltk_include ${CMAKE_MATCH_1})
    endif()
  else()
    list(APPEND fltk_options ${flag})
  endif()
endforeach()
list(REMOVE_DUPLICATES fltk_include)
add_library(FLTK::fltk INTERFACE IMPORTED)
target_include_directories(FLTK::fltk INTERFACE ${fltk_include})
target_compile_options(FLTK::fltk INTERFACE ${fltk_options})
target_link_libraries(FLTK::fltk INTERFACE ${fltk_ldflags})
message(STATUS "FLTK ${fltk_api} from ${FLTK_CONFIG}")
