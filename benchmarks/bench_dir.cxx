// The benchmarks' private working directory.
#include "bench_dir.h"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <unistd.h>

BenchDir::BenchDir() : previous_(std::filesystem::current_path()) {
    std::string pattern = (std::filesystem::temp_directory_path() / "pindle_bench_XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("cannot make a benchmark directory in " + pattern);
    path_ = pattern;
    std::filesystem::current_path(path_);
}

BenchDir::~BenchDir() {
    std::filesystem::current_path(previous_);
    std::filesystem::remove_all(path_);
}
