// The save journal read back after a crash or from a hostile hand: a whole journal is carried
// out; anything less leaves the data files exactly as they were, a torn journal thrown away, one
// that is not ours set aside with a notice. Crashes at every step of a real save, the recovery
// of a journal carried out in part or in whole already among them, are the crash states'.
#include "data_report.h"
#include "save_journal.h"
#include "support/temp_dir.h"

#include <cstring>
#include <filesystem>
#include <functional>
#include <regex>
#include <string>
#include <tuple>
#include <vector>

namespace {

std::vector<std::pair<DataReport::Kind, std::string>> said;

std::vector<std::string> leftInFolder() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator("."))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

using SaveJournalTest = TempDirTest;

// A whole journal is carried out; every way short of whole leaves the files as they were, and
// the new file left beside one of them goes too.
TEST_F(SaveJournalTest, OnlyAWholeJournalIsCarriedOut) {
    const std::string oldTodos = "abcdefghij";
    const std::string oldCategories = "old", newCategories = "new";
    {
        // Overwrites bytes 2-4 of the to-do file, cuts it to 6, and renames the new category
        // file over the old one: the three kinds of entry.
        SaveJournal journal({"pindle_todo.db", "cat.db"});
        std::memcpy(journal.write(0, 2, 3), "XYZ", 3);
        journal.setLength(0, 6);
        journal.replace(1);
        ASSERT_TRUE(journal.commit());
    }
    const std::string whole = readFile(SaveJournal::kName);
    const std::size_t header = 8 + 4 + 1 + 2 + 14 + 2 + 6;
    auto with = [&](std::size_t at, const std::string& bytes) {
        return whole.substr(0, at) + bytes +
               whole.substr(std::min(whole.size(), at + bytes.size()));
    };
    enum Outcome { CarriedOut, ThrownAway, SetAside };
    // What the journal holds, and what becomes of it.
    std::vector<std::tuple<std::string, std::string, Outcome>> cases = {
        {"whole", whole, CarriedOut},
        {"zeros where the header was", std::string(whole.size(), '\0'), ThrownAway},
        {"a checksum that does not match", with(whole.size() - 1, "?"), ThrownAway},
        {"a byte of the data changed", with(header + 14, "Q"), ThrownAway},
        {"another entry count", with(whole.size() - 16, std::string(8, '\x7f')), ThrownAway},
        {"bytes after the end", whole + "more", ThrownAway},
        {"an unknown entry", with(header, "Z"), ThrownAway},
        {"a file number past the names", with(header + 1, "\x05"), ThrownAway},
        {"a size of 4 GiB", with(header + 10, "\xff\xff\xff\xff"), ThrownAway},
        {"an offset past any data file", with(header + 2, "\x7f"), ThrownAway},
        {"another format", "SQLite format 3" + whole, SetAside},
        {"another version", with(8, std::string("\0\0\0\2", 4)), SetAside},
        {"a name that is no data file", with(15, "../etc/passw"), SetAside},
    };
    for (std::size_t cut = 0; cut < whole.size(); cut++)
        cases.emplace_back("cut at " + std::to_string(cut), whole.substr(0, cut), ThrownAway);
    struct Restore {
        ~Restore() { DataReport::setSink(nullptr); }
    } restore;
    DataReport::setSink(
        [](DataReport::Kind kind, const char* line) { said.emplace_back(kind, line); });
    std::size_t keptBefore = 0;
    for (const auto& [what, bytes, outcome] : cases) {
        SCOPED_TRACE(what);
        said.clear();
        writeFile("pindle_todo.db", oldTodos);
        writeFile("cat.db", oldCategories);
        writeFile(".cat.db.new", newCategories);
        writeFile(SaveJournal::kName, bytes);
        SaveJournal::recover();
        EXPECT_EQ(readFile("pindle_todo.db"), outcome == CarriedOut ? "abXYZf" : oldTodos);
        EXPECT_EQ(readFile("cat.db"), outcome == CarriedOut ? newCategories : oldCategories);
        EXPECT_FALSE(exists(".cat.db.new"));
        EXPECT_FALSE(exists(SaveJournal::kName));
        ASSERT_EQ(said.size(), 1u);
        const std::vector<std::string> left = leftInFolder();
        ASSERT_EQ(left.size(), 2 + keptBefore + (outcome == SetAside));
        EXPECT_EQ(left.back(), "pindle_todo.db");
        if (outcome != SetAside) {
            EXPECT_EQ(said[0].first, DataReport::Kind::Recovery);
            continue;
        }
        // Set aside whole, under a name that says so, and said in a line naming it; beside the
        // copies of the cases before, which took its name if made in the same second.
        EXPECT_EQ(said[0].first, DataReport::Kind::Notice);
        const std::string& kept = left[keptBefore++];
        EXPECT_TRUE(std::regex_match(
            kept, std::regex(R"(\.pindle_save\.journal\.unreadable-\d{8}-\d{6}(-[23])?)")))
            << kept;
        EXPECT_EQ(readFile(kept), bytes);
        EXPECT_NE(said[0].second.find(kept), std::string::npos) << said[0].second;
    }
}

// A new file a crash left without its journal is seen as something to clean, and cleaned.
TEST_F(SaveJournalTest, ANewFileAloneIsLeftOverAndRemoved) {
    for (const char* name : {".pindle_todo.db.new", ".cat.db.new"}) {
        writeFile(name, "half");
        EXPECT_TRUE(SaveJournal::leftOver()) << name;
        SaveJournal::recover();
        EXPECT_EQ(leftInFolder(), std::vector<std::string>{}) << name;
        EXPECT_FALSE(SaveJournal::leftOver());
    }
}

} // namespace
