// The writers' edges that the fixture files of the Python tests leave out: cell guards, what the
// UID hash depends on, and the choice of DTSTAMP.
#include "csv_writer.h"
#include "ics_writer.h"
#include "support/store_helpers.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

// The fixture files have cells starting with "=", "+" and "-"; these are the other guards.
TEST(CsvWriter, GuardsCellsThatSpreadsheetsWouldRun) {
    const std::pair<const char*, const char*> cases[] = {
        {"@a", "'@a"}, {"\tx", "'\tx"}, {"\rx", "\"'\rx\""}, {"a=b", "a=b"}, {"", ""}};
    for (const auto& [text, cell] : cases)
        EXPECT_EQ(CsvWriter::textCell(text), cell) << text;
}

TEST(IcsWriter, HashChangesWithPositionAndEveryField) {
    auto base = todoRecord({12, 31, 2005, 3, 0, "Work", "Task", "Notes"});
    const std::uint64_t hash = IcsWriter::recordHash(0, *base);
    EXPECT_EQ(IcsWriter::recordHash(0, *todoRecord({12, 31, 2005, 3, 0, "Work", "Task", "Notes"})),
              hash);
    EXPECT_NE(IcsWriter::recordHash(1, *base), hash);
    std::unique_ptr<TodoRecord> variants[] = {
        todoRecord({11, 31, 2005, 3, 0, "Work", "Task", "Notes"}),
        todoRecord({12, 30, 2005, 3, 0, "Work", "Task", "Notes"}),
        todoRecord({12, 31, 2006, 3, 0, "Work", "Task", "Notes"}),
        todoRecord({12, 31, 2005, 4, 0, "Work", "Task", "Notes"}),
        todoRecord({12, 31, 2005, 3, 1, "Work", "Task", "Notes"}),
        todoRecord({12, 31, 2005, 3, 0, "Home", "Task", "Notes"}),
        todoRecord({12, 31, 2005, 3, 0, "WorkT", "ask", "Notes"}),
        todoRecord({12, 31, 2005, 3, 0, "Work", "Task", "Notes!"}),
    };
    for (const auto& v : variants)
        EXPECT_NE(IcsWriter::recordHash(0, *v), hash);
}

TEST(IcsWriter, ChoosesTheStamp) {
    struct Case {
        const char* value;
        bool ok;
        std::time_t stamp;
    } cases[] = {
        {nullptr, true, 1000},
        {"0", true, 0},
        {"1136073600", true, 1136073600},
        {"253402300799", true, 253402300799},
        {"253402300800", false, 0},
        {"", false, 0},
        {"-1", false, 0},
        {"12x", false, 0},
        {" 12", false, 0},
        {"99999999999999999999", false, 0},
    };
    for (const Case& c : cases) {
        std::time_t stamp = 0;
        EXPECT_EQ(IcsWriter::chooseStamp(c.value, 1000, stamp), c.ok) << (c.value ? c.value : "");
        if (c.ok) {
            EXPECT_EQ(stamp, c.stamp);
        }
    }
}

} // namespace
