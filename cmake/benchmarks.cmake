# The benchmark programs, built by scripts/bench.sh in a Release build of their own. The
# support library holds the data generator and working-directory helper.
find_package(benchmark REQUIRED)
add_library(pindle_bench_support STATIC benchmarks/todo_generator.cxx benchmarks/bench_dir.cxx)
target_include_directories(pindle_bench_support PUBLIC benchmarks)
target_link_libraries(pindle_bench_support PUBLIC pindle_data)

add_executable(store_bench benchmarks/store_bench.cxx)
target_link_libraries(store_bench PRIVATE pindle_bench_support benchmark::benchmark)

# The list rebuild on the real main window, and the built program's start-up and memory,
# watched through the X server: it needs a display and the program beside it.
find_package(X11 REQUIRED)
add_executable(ui_bench benchmarks/ui_bench.cxx)
target_link_libraries(ui_bench PRIVATE pindle_ui pindle_bench_support benchmark::benchmark
                      X11::X11)
target_compile_definitions(ui_bench PRIVATE PINDLE_TODO_PROGRAM="$<TARGET_FILE:pindle_todo>")
add_dependencies(ui_bench pindle_todo)
