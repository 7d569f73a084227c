// The writers' edges that the fixture files of the Python tests leave out: cell guards, what the
// UID hash depends on, and the choice of DTSTAMP.
#include "csv_writer.h"
#include "ics_writer.h"
#include "support/store_helpers.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The fixture files have cells starting with "=", "+" and "-"; these are the other guards.
TEST(CsvWriter, GuardsCellsThatSpreadsheetsWouldRun) {
    const std::pair<const char*, const char*> cases[] = {
        {"@a", "'@a"}, {"\tx", "'\tx"}, {"\rx", "\"'\rx\""}, {"a=b", "a=b"}, {"", ""}};
    for (const auto& [text, cell] : cases)
        EXPECT_EQ(CsvWriter::textCell(text), cell) << text;
}

TEST(IcsWriter, HashChangesWithPositionAndEveryField) {
    const TodoFields base{12, 31, 2005, 3, 0, "Cat", "Do", "N"};
    const std::uint64_t hash = IcsWriter::recordHash(0, *todoRecord(base));
    EXPECT_EQ(IcsWriter::recordHash(0, *todoRecord(base)), hash);
    EXPECT_NE(IcsWriter::recordHash(1, *todoRecord(base)), hash);
    // Each field changed in turn, and the same bytes split otherwise between the two names.
    const TodoFields variants[] = {
        {11, 31, 2005, 3, 0, "Cat", "Do", "N"}, {12, 30, 2005, 3, 0, "Cat", "Do", "N"},
        {12, 31, 2006, 3, 0, "Cat", "Do", "N"}, {12, 31, 2005, 4, 0, "Cat", "Do", "N"},
        {12, 31, 2005, 3, 1, "Cat", "Do", "N"}, {12, 31, 2005, 3, 0, "Dog", "Do", "N"},
        {12, 31, 2005, 3, 0, "CatD", "o", "N"}, {12, 31, 2005, 3, 0, "Cat", "Do", "N!"}};
    for (const TodoFields& v : variants)
        EXPECT_NE(IcsWriter::recordHash(0, *todoRecord(v)), hash) << v.category << v.description;
}

TEST(IcsWriter, ChoosesTheStamp) {
    const std::pair<const char*, std::time_t> accepted[] = {
        {nullptr, 1000}, {"0", 0}, {"1136073600", 1136073600}, {"253402300799", 253402300799}};
    for (const auto& [value, expected] : accepted) {
        std::time_t stamp = 0;
        EXPECT_TRUE(IcsWriter::chooseStamp(value, 1000, stamp)) << (value ? value : "");
        EXPECT_EQ(stamp, expected) << (value ? value : "");
    }
    for (const char* value : {"253402300800", "", "-1", "12x", " 12", "99999999999999999999"}) {
        std::time_t stamp = 0;
        EXPECT_FALSE(IcsWriter::chooseStamp(value, 1000, stamp)) << value;
    }
}

} // namespace
