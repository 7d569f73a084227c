// What the file-loader fuzz targets share: a private working directory for the data files (the
// stores use the current one), whole-file helpers, and a check that aborts, so that libFuzzer
// keeps the input as a finding.
#ifndef PINDLE_FUZZ_HARNESS_H
#define PINDLE_FUZZ_HARNESS_H

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace FuzzHarness {

inline void require(bool ok, const char* what) {
    if (ok)
        return;
    std::fprintf(stderr, "fuzz check failed: %s\n", what);
    std::abort();
}

inline std::string& privateDir() {
    static std::string dir;
    return dir;
}

// libFuzzer reads and writes its folders and inputs after this, so scripts/fuzz.sh gives them,
// and -artifact_prefix, as absolute paths.
inline void enterPrivateDir() {
    std::string pattern = std::filesystem::temp_directory_path() / "pindle_fuzz_XXXXXX";
    require(mkdtemp(pattern.data()) != nullptr, "cannot create a private directory");
    privateDir() = pattern;
    require(chdir(pattern.c_str()) == 0, "cannot enter the private directory");
    std::atexit([] {
        std::error_code ignored;
        std::filesystem::remove_all(privateDir(), ignored);
    });
}

inline void writeFile(const char* name, const std::uint8_t* data, std::size_t size) {
    std::ofstream(name, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

inline std::string readFile(const char* name) {
    std::ifstream in(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A text field as a loader keeps it: up to its first zero, and at most `most` bytes.
inline std::string text(const std::uint8_t* field, std::size_t most) {
    const char* start = reinterpret_cast<const char*>(field);
    return {start, strnlen(start, most)};
}

} // namespace FuzzHarness

#endif
