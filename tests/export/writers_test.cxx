// The writers' edges that the fixture files of the Python tests leave out: date limits, cell
// guards, text cleaning, VTODO fields over a server's copy, what the UID hash depends on, and
// the choice of DTSTAMP.
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

TEST(IcsWriter, CleansText) {
    const std::pair<const char*, const char*> cases[] = {
        {"one\ntwo\r\nthree\rfour", "one\ntwo\nthree\nfour"},
        {"tab\tbell\a del\x7f", "tab\tbell del"},
        {"caf\xc3\xa9;,\\", "caf\xc3\xa9;,\\"},
    };
    for (const auto& [text, cleaned] : cases)
        EXPECT_EQ(IcsWriter::cleanText(text), cleaned) << text;
}

std::string property(icalcomponent* vtodo, icalproperty_kind kind) {
    icalproperty* p = icalcomponent_get_first_property(vtodo, kind);
    return p == nullptr ? "-" : icalproperty_get_value_as_string(p);
}

// A server's VTODO keeps what the to-do does not describe; the fields it does are replaced,
// and those the to-do lacks are removed.
TEST(IcsWriter, SetsFieldsOverWhatAVtodoHad) {
    icalcomponent* vtodo = icalparser_parse_string(
        "BEGIN:VTODO\r\nUID:u1\r\nSUMMARY:old\r\nDESCRIPTION:old notes\r\nPRIORITY:7\r\n"
        "DUE:20200101T100000Z\r\nSTATUS:COMPLETED\r\nCOMPLETED:20200102T100000Z\r\n"
        "PERCENT-COMPLETE:100\r\nCATEGORIES:A,B\r\nDTSTART:20191201T100000Z\r\nEND:VTODO\r\n");
    ASSERT_NE(vtodo, nullptr);
    auto r = makeTodo(2, 30, 2005, 11, 0, "Home", "new", "");
    IcsWriter::setFields(vtodo, TodoView(*r));
    const std::pair<icalproperty_kind, const char*> expected[] = {
        {ICAL_UID_PROPERTY, "u1"},          {ICAL_SUMMARY_PROPERTY, "new"},
        {ICAL_DESCRIPTION_PROPERTY, "-"},   {ICAL_DUE_PROPERTY, "-"},
        {ICAL_PRIORITY_PROPERTY, "-"},      {ICAL_STATUS_PROPERTY, "NEEDS-ACTION"},
        {ICAL_COMPLETED_PROPERTY, "-"},     {ICAL_PERCENTCOMPLETE_PROPERTY, "-"},
        {ICAL_CATEGORIES_PROPERTY, "Home"}, {ICAL_DTSTART_PROPERTY, "20191201T100000Z"},
    };
    for (const auto& [kind, value] : expected)
        EXPECT_EQ(property(vtodo, kind), value) << icalproperty_kind_to_string(kind);
    EXPECT_EQ(icalcomponent_count_properties(vtodo, ICAL_CATEGORIES_PROPERTY), 2);
    icalcomponent_free(vtodo);
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
