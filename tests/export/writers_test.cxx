// The export writers: how a record's fields are read (run-on text, damaged dates and priorities)
// and the exact text each format makes of them.
#include "csv_writer.h"
#include "ics_writer.h"
#include "json_writer.h"
#include "todo_view.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::unique_ptr<TodoRecord> makeTodo(int month, int day, int year, int priority, int completed,
                                     const char* category, const char* description,
                                     const char* notes) {
    auto r = std::make_unique<TodoRecord>();
    r->month = month;
    r->day = day;
    r->year = year;
    r->priority = priority;
    r->completed = static_cast<unsigned char>(completed);
    r->setCategory(category);
    r->setDescription(description);
    r->setNotes(notes);
    return r;
}

TEST(TodoView, WritesOnlyRealCalendarDates) {
    struct Case {
        int month, day, year;
        const char* iso;
    } cases[] = {
        {12, 31, 2005, "2005-12-31"},
        {2, 29, 2008, "2008-02-29"},
        {2, 29, 2009, ""},
        {1, 1, 1, "0001-01-01"},
        {12, 31, 9999, "9999-12-31"},
        {0, 1, 2005, ""},
        {13, 1, 2005, ""},
        {4, 31, 2005, ""},
        {4, 0, 2005, ""},
        {1, 1, 0, ""},
        {1, 1, 10000, ""},
        {-1, -1, -1, ""},
    };
    for (const Case& c : cases) {
        auto r = makeTodo(c.month, c.day, c.year, 0, 0, "", "", "");
        TodoView view(*r);
        EXPECT_EQ(view.isoDate(), c.iso) << c.month << "/" << c.day << "/" << c.year;
        EXPECT_EQ(view.hasDate(), *c.iso != '\0');
    }
}

TEST(TodoView, ShowsPriorityPlusOneWithoutOverflow) {
    const std::pair<int, long long> cases[] = {
        {0, 1}, {8, 9}, {-5, -4}, {1000, 1001}, {INT_MAX, 2147483648LL}, {INT_MIN, -2147483647LL}};
    for (const auto& [stored, shown] : cases) {
        auto r = makeTodo(1, 1, 2005, stored, 0, "", "", "");
        EXPECT_EQ(TodoView(*r).priority(), shown);
    }
}

TEST(TodoView, CutsFullLengthFieldsAtTheirSize) {
    const std::string fifty(50, 'c');
    auto r = makeTodo(1, 1, 2005, 0, 0, "", "", "");
    // As a file holds them: no terminator in the first two fields, the text runs on.
    std::memcpy(r->category, fifty.data(), 50);
    std::memcpy(r->description, std::string(50, 'd').data(), 50);
    std::strcpy(r->notes, "notes");
    TodoView view(*r);
    EXPECT_EQ(view.category(), fifty);
    EXPECT_EQ(view.description(), std::string(50, 'd'));
    EXPECT_EQ(view.notes(), "notes");
}

TEST(CsvWriter, GuardsAndQuotesTextCells) {
    const std::pair<const char*, const char*> cases[] = {
        {"plain", "plain"},
        {"", ""},
        {"a,b", "\"a,b\""},
        {"say \"hi\"", "\"say \"\"hi\"\"\""},
        {"two\nlines", "\"two\nlines\""},
        {"cr\r", "\"cr\r\""},
        {"=1+1", "'=1+1"},
        {"+1", "'+1"},
        {"-1", "'-1"},
        {"@SUM(A1)", "'@SUM(A1)"},
        {"\tx", "'\tx"},
        {"=a,b", "\"'=a,b\""},
        {"a=b", "a=b"},
    };
    for (const auto& [text, cell] : cases)
        EXPECT_EQ(CsvWriter::textCell(text), cell) << text;
}

TEST(CsvWriter, WritesHeaderAndRowsWithCrlf) {
    auto first = makeTodo(12, 31, 2005, 8, 1, "Work", "Ship, now", "line 1\nline 2");
    auto second = makeTodo(13, 0, 2005, -5, 0, "", "=cmd", "");
    first->next = second.get();
    std::ostringstream out;
    CsvWriter::write(out, first.get());
    EXPECT_EQ(out.str(), "due,priority,completed,category,description,notes\r\n"
                         "2005-12-31,9,1,Work,\"Ship, now\",\"line 1\nline 2\"\r\n"
                         ",-4,0,,'=cmd,\r\n");
}

TEST(JsonWriter, EscapesStrings) {
    const std::pair<std::string, const char*> cases[] = {
        {"plain", "\"plain\""},
        {"q\"b\\", "\"q\\\"b\\\\\""},
        {"\n\r\t\b\f", "\"\\n\\r\\t\\b\\f\""},
        {std::string("\x01\x1f"), "\"\\u0001\\u001f\""},
        {"caf\xc3\xa9 \x7f", "\"caf\xc3\xa9 \x7f\""},
    };
    for (const auto& [text, literal] : cases)
        EXPECT_EQ(JsonWriter::quote(text), literal);
}

TEST(JsonWriter, WritesTodosAndCategories) {
    auto todo = makeTodo(2, 30, 2005, 2, 3, "Home", "Fix \"it\"", "");
    CategoryRecord first, second;
    first.setName("Home");
    second.setName("Caf\xe9");
    first.next = &second;
    std::ostringstream out;
    JsonWriter::write(out, todo.get(), &first);
    EXPECT_EQ(out.str(), "{\n  \"todos\": [\n    {\n      \"due\": null,\n"
                         "      \"priority\": 3,\n      \"completed\": true,\n"
                         "      \"category\": \"Home\",\n"
                         "      \"description\": \"Fix \\\"it\\\"\",\n      \"notes\": \"\"\n"
                         "    }\n  ],\n  \"categories\": [\n    \"Home\",\n"
                         "    \"Caf\xc3\xa9\"\n  ]\n}\n");
    std::ostringstream empty;
    JsonWriter::write(empty, nullptr, nullptr);
    EXPECT_EQ(empty.str(), "{\n  \"todos\": [],\n  \"categories\": []\n}\n");
}

TEST(IcsWriter, EscapesText) {
    const std::pair<const char*, const char*> cases[] = {
        {"a\\b;c,d", "a\\\\b\\;c\\,d"},
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

TEST(IcsWriter, LeavesOutWhatTheRecordCannotSay) {
    auto todo = makeTodo(2, 29, 2009, 1000, 0, "", "", "");
    std::ostringstream out;
    IcsWriter::write(out, todo.get(), 0);
    std::string text = out.str();
    EXPECT_EQ(text.find("DUE"), std::string::npos);
    EXPECT_EQ(text.find("PRIORITY"), std::string::npos);
    EXPECT_EQ(text.find("CATEGORIES"), std::string::npos);
    EXPECT_EQ(text.find("DESCRIPTION"), std::string::npos);
    EXPECT_NE(text.find("\r\nDTSTAMP:19700101T000000Z\r\nSUMMARY:\r\nSTATUS:NEEDS-ACTION\r\n"),
              std::string::npos);
}

} // namespace
