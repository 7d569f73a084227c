# The libFuzzer target for the to-do file's loader, driven by scripts/fuzz.sh, which also writes
# its seed files.
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  message(FATAL_ERROR "PINDLE_FUZZ needs clang: configure with -DCMAKE_CXX_COMPILER=clang++")
endif()
set(fuzz_sanitize_flags -fsanitize=address,undefined -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
# A second copy of the data layer, instrumented for coverage; the normal one stays as it is.
get_target_property(fuzz_data_sources pindle_data SOURCES)
add_library(pindle_data_fuzz STATIC ${fuzz_data_sources})
target_include_directories(pindle_data_fuzz PUBLIC src/data)
target_compile_options(pindle_data_fuzz PRIVATE ${fuzz_sanitize_flags} -fsanitize=fuzzer-no-link)
add_executable(todo_file_fuzzer fuzz/todo_file_fuzzer.cxx)
target_include_directories(todo_file_fuzzer PRIVATE tests)
target_compile_options(todo_file_fuzzer PRIVATE ${fuzz_sanitize_flags} -fsanitize=fuzzer)
target_link_options(todo_file_fuzzer PRIVATE ${fuzz_sanitize_flags} -fsanitize=fuzzer)
target_link_libraries(todo_file_fuzzer PRIVATE pindle_data_fuzz)
