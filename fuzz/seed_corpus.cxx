// Writes the fuzz targets' seed files: a handful of small but valid to-do and category files,
// so that fuzzing starts from whole records instead of having to discover their sizes.
#include "support/store_helpers.h"

#include <climits>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Seeds = std::vector<std::pair<const char*, std::string>>;

Seeds todoSeeds() {
    TodoFields plain;
    plain.category = "Home", plain.description = "Buy milk", plain.notes = "two litres";
    TodoFields odd;
    odd.month = INT_MIN, odd.day = -1, odd.year = INT_MAX, odd.priority = 1000;
    odd.completed = 255, odd.link = 0xffffffffu;
    TodoFields unterminated;
    unterminated.category = std::string(50, 'C');
    unterminated.description = std::string(50, 'D');
    unterminated.notes = std::string(32000, 'N');
    TodoFields junk; // bytes after each terminator, which a save turns into zeros
    junk.category = std::string("Work\0old", 8);
    junk.description = std::string("Call\0stale text", 15);
    junk.notes = std::string("\0leftover", 9);
    TodoFields second = plain;
    second.description = "Second", second.completed = 1;
    TodoFields first = plain;
    first.link = 1;
    return {{"empty", ""},
            {"one", todoBytes(plain)},
            {"two_and_tail", todoBytes(first) + todoBytes(second) + "partial"},
            {"odd_numbers", todoBytes(odd)},
            {"unterminated", todoBytes(unterminated)},
            {"junk_after_terminators", todoBytes(junk)}};
}

Seeds categorySeeds() {
    return {{"empty", ""},
            {"one", categoryBytes("Unassigned")},
            {"three_and_tail",
             categoryBytes("Home", 1) + categoryBytes("Work", 7) + categoryBytes("", 0) + "tail"},
            {"unterminated", categoryBytes(std::string(52, 'U'), 0xffffffffu)},
            {"junk_after_terminator", categoryBytes(std::string("Home\0old name", 13))}};
}

bool writeAll(const std::filesystem::path& dir, const Seeds& seeds) {
    std::filesystem::create_directories(dir);
    for (const auto& [name, bytes] : seeds) {
        std::ofstream out(dir / name, std::ios::binary | std::ios::trunc);
        out << bytes;
        if (!out.good())
            return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <output folder>\n", argv[0]);
        return 2;
    }
    const std::filesystem::path out = argv[1];
    if (!writeAll(out / "todo", todoSeeds()) || !writeAll(out / "category", categorySeeds())) {
        std::fprintf(stderr, "could not write the seed files under %s\n", argv[1]);
        return 1;
    }
    return 0;
}
