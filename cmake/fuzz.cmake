# The libFuzzer targets for the to-do file's loader and for runs of saves in place, driven by
# scripts/fuzz.sh, which also writes their seed files. The sync's own is in sync.cmake.
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  message(FATAL_ERROR "PINDLE_FUZZ needs clang: configure with -DCMAKE_CXX_COMPILER=clang++")
endif()
set(fuzz_sanitize_flags -fsanitize=address,undefined -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
# A second copy of the data layer, instrumented for coverage; the normal one stays as it is.
get_target_property(fuzz_data_sources pindle_data SOURCES)
add_library(pindle_data_fuzz STATIC ${fuzz_data_sources})
get_target_property(fuzz_data_includes pindle_data INCLUDE_DIRECTORIES)
get_target_property(fuzz_data_links pindle_data LINK_LIBRARIES)
target_include_directories(pindle_data_fuzz PUBLIC ${fuzz_data_includes})
target_link_libraries(pindle_data_fuzz PUBLIC ${fuzz_data_links})
target_compile_options(pindle_data_fuzz PRIVATE ${fuzz_sanitize_flags} -fsanitize=fuzzer-no-link)
foreach(fuzzer todo_file_fuzzer save_sequence_fuzzer)
  add_executable(${fuzzer} fuzz/${fuzzer}.cxx)
  target_include_directories(${fuzzer} PRIVATE tests)
  target_compile_options(${fuzzer} PRIVATE ${fuzz_sanitize_flags} -fsanitize=fuzzer)
  target_link_options(${fuzzer} PRIVATE ${fuzz_sanitize_flags} -fsanitize=fuzzer)
  target_link_libraries(${fuzzer} PRIVATE pindle_data_fuzz)
endforeach()
