// The writers' edges that the fixture files of the Python tests leave out: date limits, escapes,
// folding, what the UID hash depends on, and the choice of DTSTAMP.
#include "cal_date.h"
#include "csv_writer.h"
#include "ics_writer.h"
#include "support/store_helpers.h"
#include "todo_view.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::unique_ptr<TodoRecord> makeTodo(int month, int day, int year, int priority, int completed,
                                     const char* category, const char* description,
                                     const char* notes) {
    auto r = std::make_unique<TodoRecord>();
    std::string bytes =
        todoBytes({month, day, year, priority, static_cast<unsigned char>(completed), category,
                   description, notes});
    r->decode(reinterpret_cast<const unsigned char*>(bytes.data()));
    return r;
}

// The fixture files hold dates that are no dates; these are the limits of the four-digit year.
TEST(TodoView, WritesOnlyRealCalendarDatesWithFourDigitYears) {
    const std::pair<CalDate, const char*> cases[] = {
        {{1, 1, 1}, "0001-01-01"}, {{12, 31, 9999}, "9999-12-31"},
        {{1, 1, 0}, ""},           {{1, 1, 10000}, ""},
        {{4, 31, 2005}, ""},       {{-1, -1, -1}, ""}};
    for (const auto& [date, iso] : cases) {
        auto r = makeTodo(date.month, date.day, date.year, 0, 0, "", "", "");
        EXPECT_EQ(TodoView(*r).isoDate(), iso) << date.year;
        EXPECT_EQ(TodoView(*r).hasDate(), *iso != '\0');
    }
}

// The fixture files have cells starting with "=", "+" and "-"; these are the other guards.
TEST(CsvWriter, GuardsCellsThatSpreadsheetsWouldRun) {
    const std::pair<const char*, const char*> cases[] = {
        {"@a", "'@a"}, {"\tx", "'\tx"}, {"\rx", "\"'\rx\""}, {"a=b", "a=b"}, {"", ""}};
    for (const auto& [text, cell] : cases)
        EXPECT_EQ(CsvWriter::textCell(text), cell) << text;
}

TEST(IcsWriter, EscapesText) {
    const std::pair<const char*, const char*> cases[] = {
        {"one\ntwo\r\nthree\rfour", "one\\ntwo\\nthree\\nfour"},
        {"tab\tbell\a del\x7f", "tab\tbell del"},
        {"caf\xc3\xa9", "caf\xc3\xa9"},
    };
    for (const auto& [text, escaped] : cases)
        EXPECT_EQ(IcsWriter::escapeText(text), escaped) << text;
}

std::vector<std::string> foldedLines(const std::string& line) {
    std::ostringstream out;
    IcsWriter::writeFolded(out, line);
    std::vector<std::string> lines;
    std::string text = out.str();
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = text.find("\r\n", start);
        EXPECT_NE(end, std::string::npos) << "every line ends with CRLF";
        lines.push_back(text.substr(start, end - start));
        start = end + 2;
    }
    return lines;
}

TEST(IcsWriter, FoldsAt75OctetsOnCharacterBoundaries) {
    const std::string euro = "\xe2\x82\xac";
    struct Case {
        std::string line;
        std::vector<std::string> lines;
    } cases[] = {
        {std::string(75, 'a'), {std::string(75, 'a')}},
        {std::string(76, 'a'), {std::string(75, 'a'), " a"}},
        {std::string(75 + 74, 'a'), {std::string(75, 'a'), " " + std::string(74, 'a')}},
        {std::string(73, 'a') + euro, {std::string(73, 'a'), " " + euro}},
        {std::string(72, 'a') + euro + "b", {std::string(72, 'a') + euro, " b"}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(foldedLines(c.line), c.lines) << c.line.size();
}

TEST(IcsWriter, HashChangesWithPositionAndEveryField) {
    auto base = makeTodo(12, 31, 2005, 3, 0, "Work", "Task", "Notes");
    const std::uint64_t hash = IcsWriter::recordHash(0, *base);
    EXPECT_EQ(IcsWriter::recordHash(0, *makeTodo(12, 31, 2005, 3, 0, "Work", "Task", "Notes")),
              hash);
    EXPECT_NE(IcsWriter::recordHash(1, *base), hash);
    std::unique_ptr<TodoRecord> variants[] = {
        makeTodo(11, 31, 2005, 3, 0, "Work", "Task", "Notes"),
        makeTodo(12, 30, 2005, 3, 0, "Work", "Task", "Notes"),
        makeTodo(12, 31, 2006, 3, 0, "Work", "Task", "Notes"),
        makeTodo(12, 31, 2005, 4, 0, "Work", "Task", "Notes"),
        makeTodo(12, 31, 2005, 3, 1, "Work", "Task", "Notes"),
        makeTodo(12, 31, 2005, 3, 0, "Home", "Task", "Notes"),
        makeTodo(12, 31, 2005, 3, 0, "WorkT", "ask", "Notes"),
        makeTodo(12, 31, 2005, 3, 0, "Work", "Task", "Notes!"),
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
