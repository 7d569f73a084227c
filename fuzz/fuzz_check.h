// What the fuzz targets share: a failed check, which libFuzzer keeps as a finding, and the
// private folder the targets on the data files work in.
#ifndef PINDLE_FUZZ_CHECK_H
#define PINDLE_FUZZ_CHECK_H

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

inline void require(bool ok, const char* what) {
    if (ok)
        return;
    std::fprintf(stderr, "fuzz check failed: %s\n", what);
    std::abort(); // libFuzzer keeps the input as a finding
}

// The stores use the current folder: a private one under TMPDIR, which scripts/fuzz.sh removes;
// it gives libFuzzer its folders and inputs as absolute paths for that reason. Returns 0, as
// LLVMFuzzerInitialize does.
inline int enterPrivateFolder() {
    std::string folder = std::filesystem::temp_directory_path() / "pindle_fuzz_XXXXXX";
    require(mkdtemp(folder.data()) != nullptr && chdir(folder.c_str()) == 0, "no private folder");
    return 0;
}

#endif
