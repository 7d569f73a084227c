// The save journal read back after a crash or from a hostile hand: a whole journal is carried
// out, once or twice alike; anything less leaves the data files exactly as they were, a torn
// journal thrown away, one that is not ours set aside with a notice.
#include "data_report.h"
#include "save_journal.h"
#include "support/temp_dir.h"

#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace {

std::vector<std::pair<DataReport::Kind, std::string>> said;

void keep(DataReport::Kind kind, const char* line) {
    said.emplace_back(kind, line);
}

class SaveJournalTest : public TempDirTest {
protected:
    void SetUp() override {
        TempDirTest::SetUp();
        said.clear();
        DataReport::setSink(keep);
        writeFile("pindle_todo.db", kOldTodos);
        writeFile("cat.db", kOldCategories);
        writeFile(".cat.db.new", kNewCategories);
    }
    void TearDown() override {
        DataReport::setSink(nullptr);
        TempDirTest::TearDown();
    }

    // Overwrites bytes 2-4 of the to-do file, cuts it to 6, and renames the new category file
    // over the old one: the three kinds of entry.
    static std::string journal() {
        SaveJournal journal({"pindle_todo.db", "cat.db"});
        std::memcpy(journal.write(0, 2, 3), "XYZ", 3);
        journal.setLength(0, 6);
        journal.replace(1);
        EXPECT_TRUE(journal.commit());
        return readFile(SaveJournal::kName);
    }

    static std::vector<std::string> leftInFolder() {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator("."))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    static constexpr const char* kOldTodos = "abcdefghij";
    static constexpr const char* kNewTodos = "abXYZf";
    static constexpr const char* kOldCategories = "old";
    static constexpr const char* kNewCategories = "new";
};

TEST_F(SaveJournalTest, AWholeJournalIsCarriedOutAndRemovedOnceOrTwice) {
    const std::string bytes = journal();
    for (int run = 0; run < 2; run++) {
        writeFile(SaveJournal::kName, bytes); // a crash right before its removal
        ASSERT_TRUE(SaveJournal::leftOver());
        EXPECT_TRUE(SaveJournal::recover());
        EXPECT_EQ(readFile("pindle_todo.db"), kNewTodos) << "run " << run;
        EXPECT_EQ(readFile("cat.db"), kNewCategories) << "run " << run;
        EXPECT_EQ(leftInFolder(), (std::vector<std::string>{"cat.db", "pindle_todo.db"}));
        EXPECT_FALSE(SaveJournal::leftOver());
        ASSERT_EQ(said.size(), 1u);
        EXPECT_EQ(said[0].first, DataReport::Kind::Recovery);
        said.clear();
    }
}

// Every way short of whole: the files stay as they were, and the new file left beside one of
// them goes too.
TEST_F(SaveJournalTest, AnythingLessThanAWholeJournalLeavesTheFilesAsTheyWere) {
    const std::string whole = journal();
    const std::size_t header = 8 + 4 + 1 + 2 + 14 + 2 + 6;
    auto with = [&](std::size_t at, const std::string& bytes) {
        return whole.substr(0, at) + bytes +
               whole.substr(std::min(whole.size(), at + bytes.size()));
    };
    struct Case {
        std::string what;
        std::string bytes;
        bool ours;
    };
    std::vector<Case> cases = {
        {"zeros where the header was", std::string(whole.size(), '\0'), true},
        {"a checksum that does not match", with(whole.size() - 1, "?"), true},
        {"a byte of the data changed", with(header + 14, "Q"), true},
        {"another entry count", with(whole.size() - 16, std::string(8, '\x7f')), true},
        {"bytes after the end", whole + "more", true},
        {"an unknown entry", with(header, "Z"), true},
        {"a file number past the names", with(header + 1, "\x05"), true},
        {"a size of 4 GiB", with(header + 10, "\xff\xff\xff\xff"), true},
        {"an offset past any data file", with(header + 2, "\x7f"), true},
        {"another format", "SQLite format 3" + whole, false},
        {"another version", with(8, std::string("\0\0\0\2", 4)), false},
        {"a name that is no data file", with(15, "../etc/passw"), false},
    };
    for (std::size_t cut = 0; cut < whole.size(); cut++)
        cases.push_back({"cut at " + std::to_string(cut), whole.substr(0, cut), true});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        said.clear();
        writeFile(SaveJournal::kName, c.bytes);
        writeFile(".cat.db.new", kNewCategories);
        EXPECT_EQ(SaveJournal::recover(), c.ours);
        EXPECT_EQ(readFile("pindle_todo.db"), kOldTodos);
        EXPECT_EQ(readFile("cat.db"), kOldCategories);
        EXPECT_FALSE(exists(".cat.db.new"));
        EXPECT_FALSE(exists(SaveJournal::kName));
        ASSERT_EQ(said.size(), 1u);
        if (c.ours) {
            EXPECT_EQ(said[0].first, DataReport::Kind::Recovery);
            EXPECT_EQ(leftInFolder().size(), 2u);
            continue;
        }
        // Set aside whole, under a name that says so, and said in a line naming it.
        EXPECT_EQ(said[0].first, DataReport::Kind::Notice);
        const std::vector<std::string> left = leftInFolder();
        ASSERT_EQ(left.size(), 3u);
        EXPECT_EQ(left[0].rfind(std::string(SaveJournal::kName) + ".unreadable-", 0), 0u);
        EXPECT_EQ(readFile(left[0]), c.bytes);
        EXPECT_NE(said[0].second.find(left[0]), std::string::npos) << said[0].second;
        std::filesystem::remove(left[0]);
    }
}

} // namespace
