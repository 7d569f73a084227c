// A private working directory for one benchmark: the stores read and write the current
// directory, so each measure runs in its own and leaves nothing behind.
#ifndef PINDLE_BENCH_DIR_H
#define PINDLE_BENCH_DIR_H

#include <filesystem>

class BenchDir {
public:
    // Made under $TMPDIR (or /tmp) and entered; the previous directory comes back on destruction.
    BenchDir();
    ~BenchDir();
    BenchDir(const BenchDir&) = delete;
    BenchDir& operator=(const BenchDir&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
    std::filesystem::path previous_;
};

#endif
