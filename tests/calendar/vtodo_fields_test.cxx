// The calendar mapping's edges that the companions' end-to-end tests leave out: dates that are
// no dates, text cleaning, and a VTODO's fields set over a server's copy.
#include "cal_date.h"
#include "support/store_helpers.h"
#include "todo_view.h"
#include "vtodo_fields.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

// The fixture files hold dates that are no dates; these are the limits of the four-digit year.
TEST(TodoView, WritesOnlyRealCalendarDatesWithFourDigitYears) {
    const std::pair<CalDate, const char*> cases[] = {
        {{1, 1, 1}, "0001-01-01"}, {{12, 31, 9999}, "9999-12-31"},
        {{1, 1, 0}, ""},           {{1, 1, 10000}, ""},
        {{4, 31, 2005}, ""},       {{-1, -1, -1}, ""},
        {{1, 0, 2030}, ""},        {{2, 29, 2028}, "2028-02-29"}};
    for (const auto& [date, iso] : cases) {
        auto r = todoRecord({date.month, date.day, date.year, 0, 0, "", "", ""});
        EXPECT_EQ(TodoView(*r).isoDate(), iso) << date.year;
        EXPECT_EQ(TodoView(*r).hasDate(), *iso != '\0');
    }
}

TEST(VtodoFields, CleansText) {
    const std::pair<const char*, const char*> cases[] = {
        {"one\ntwo\r\nthree\rfour", "one\ntwo\nthree\nfour"},
        {"tab\tbell\a del\x7f", "tab\tbell del"},
        {"caf\xc3\xa9;,\\", "caf\xc3\xa9;,\\"},
    };
    for (const auto& [text, cleaned] : cases)
        EXPECT_EQ(VtodoFields::cleanText(text), cleaned) << text;
}

std::string property(icalcomponent* vtodo, icalproperty_kind kind) {
    icalproperty* p = icalcomponent_get_first_property(vtodo, kind);
    return p == nullptr ? "-" : icalproperty_get_value_as_string(p);
}

// A server's VTODO keeps what the to-do does not describe; the fields it does are replaced,
// and those the to-do lacks are removed.
TEST(VtodoFields, SetsFieldsOverWhatAVtodoHad) {
    icalcomponent* vtodo = icalparser_parse_string(
        "BEGIN:VTODO\r\nUID:u1\r\nSUMMARY:old\r\nDESCRIPTION:old notes\r\nPRIORITY:7\r\n"
        "DUE:20200101T100000Z\r\nSTATUS:COMPLETED\r\nCOMPLETED:20200102T100000Z\r\n"
        "PERCENT-COMPLETE:100\r\nCATEGORIES:A,B\r\nDTSTART:20191201T100000Z\r\nEND:VTODO\r\n");
    ASSERT_NE(vtodo, nullptr);
    auto r = todoRecord({2, 30, 2005, 11, 0, "Home", "new", ""});
    VtodoFields::set(vtodo, TodoView(*r));
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
    // A to-do without a category takes away the one it had set, not the server's others.
    auto bare = todoRecord({2, 28, 2005, 0, 0, "", "new", ""});
    VtodoFields::set(vtodo, TodoView(*bare));
    EXPECT_EQ(property(vtodo, ICAL_CATEGORIES_PROPERTY), "B");
    EXPECT_EQ(icalcomponent_count_properties(vtodo, ICAL_CATEGORIES_PROPERTY), 1);
    icalcomponent_free(vtodo);
}

} // namespace
