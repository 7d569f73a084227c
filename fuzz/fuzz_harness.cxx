// The fuzz targets' private directory, file helpers and field comparisons. Nothing here knows
// the program's own code, so the targets check the stores against the file layout alone.
#include "fuzz_harness.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace FuzzHarness {

namespace {
std::string privateDir;

void removePrivateDir() {
    std::error_code ignored;
    std::filesystem::current_path("/", ignored);
    std::filesystem::remove_all(privateDir, ignored);
}

void requireAbsolutePaths(int argc, char** argv) {
    for (int i = 1; i < argc; i++) {
        const char* arg = argv[i];
        if (arg[0] == '-' || arg[0] == '/')
            continue;
        std::fprintf(stderr, "%s: give folders and inputs as absolute paths, not %s\n", argv[0],
                     arg);
        std::exit(2);
    }
}
} // namespace

void enterPrivateDir(int argc, char** argv) {
    requireAbsolutePaths(argc, argv);
    std::string pattern = std::filesystem::temp_directory_path() / "pindle_fuzz_XXXXXX";
    require(mkdtemp(pattern.data()) != nullptr, "cannot create a private directory");
    privateDir = pattern;
    require(chdir(pattern.c_str()) == 0, "cannot enter the private directory");
    std::atexit(removePrivateDir);
}

void writeFile(const char* name, const std::uint8_t* data, std::size_t size) {
    std::ofstream out(name, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    require(out.good(), "cannot write the input file");
}

std::string readFile(const char* name) {
    std::ifstream in(name, std::ios::binary);
    require(in.good(), "cannot read back the saved file");
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void require(bool ok, const char* what) {
    if (ok)
        return;
    std::fprintf(stderr, "fuzz check failed: %s\n", what);
    std::abort();
}

std::int32_t readBigEndian(const unsigned char* bytes) {
    std::uint32_t bits = (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
                         (std::uint32_t{bytes[2]} << 8) | std::uint32_t{bytes[3]};
    return static_cast<std::int32_t>(bits);
}

std::string significant(const char* field, std::size_t size) {
    const void* end = std::memchr(field, 0, size);
    std::size_t used = end != nullptr ? static_cast<const char*>(end) - field + 1 : size;
    return {field, used};
}

std::string loadedField(const unsigned char* bytes, std::size_t size, bool mustEnd) {
    std::string kept = significant(reinterpret_cast<const char*>(bytes), size);
    if (mustEnd && kept.back() != '\0')
        kept.back() = '\0';
    return kept;
}

} // namespace FuzzHarness
