// A to-do as the iCalendar it goes up as: a new task, or the server's own copy with the to-do's
// fields put on it and everything else kept; stamped with the time of the upload either way.
#include "support/store_helpers.h"
#include "task_writer.h"

#include <gtest/gtest.h>

#include <libical/ical.h>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <tuple>

namespace {

using Component = std::unique_ptr<icalcomponent, decltype(&icalcomponent_free)>;

std::string property(icalcomponent* vtodo, icalproperty_kind kind) {
    icalproperty* p = icalcomponent_get_first_property(vtodo, kind);
    return p == nullptr ? "-" : icalproperty_get_value_as_string(p);
}

// Built on the server's copy, only the fields asked for change there and all else it holds
// stays, what it lacked too; a new task (no copy, or one without a task) gets every field.
// Stamped with the time of the upload either way.
TEST(TaskWriter, PutsTheFieldsAskedOnTheServersCopyOrAllOnANewTask) {
    using namespace TodoField;
    auto record = todoRecord({3, 1, 2030, 4, 1, "Work", "Mine", "the notes"});
    const std::string server = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//phone//EN\r\n"
                               "BEGIN:VTODO\r\nUID:theirs\r\nDTSTAMP:20200101T000000Z\r\n"
                               "SUMMARY:Theirs\r\nX-KEPT:yes\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";
    const std::string mine = "-//Pindle ToDo//pindle_sync//EN mine - ";
    const std::string every = "Mine|the notes|20300301|5|COMPLETED|Work";
    const std::tuple<std::string, Set, std::string> cases[] = {
        {server, Set().set(Notes), "-//phone//EN theirs yes Theirs|the notes|-|-|-|-"},
        {server, Set().set(Date).set(Completed),
         "-//phone//EN theirs yes Theirs|-|20300301|-|COMPLETED|-"},
        {server, Set().set(Priority).set(Category).set(Description),
         "-//phone//EN theirs yes Mine|-|-|5|-|Work"},
        {server, all(), "-//phone//EN theirs yes " + every},
        {"", Set().set(Notes), mine + every},
        {"BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n", Set().set(Notes), mine + every}};
    for (const auto& [serverIcs, fields, expected] : cases) {
        // 2030-03-01T12:00:00Z
        Component calendar(
            icalparser_parse_string(
                TaskWriter::build(*record, "mine", serverIcs, 1898596800, fields).c_str()),
            &icalcomponent_free);
        icalcomponent* vtodo =
            icalcomponent_get_first_component(calendar.get(), ICAL_VTODO_COMPONENT);
        ASSERT_NE(vtodo, nullptr);
        std::string got = property(calendar.get(), ICAL_PRODID_PROPERTY) + " " +
                          property(vtodo, ICAL_UID_PROPERTY) + " " +
                          property(vtodo, ICAL_X_PROPERTY) + " ";
        for (icalproperty_kind kind :
             {ICAL_SUMMARY_PROPERTY, ICAL_DESCRIPTION_PROPERTY, ICAL_DUE_PROPERTY,
              ICAL_PRIORITY_PROPERTY, ICAL_STATUS_PROPERTY, ICAL_CATEGORIES_PROPERTY})
            got += property(vtodo, kind) + (kind == ICAL_CATEGORIES_PROPERTY ? "" : "|");
        EXPECT_EQ(got, expected) << fields << serverIcs;
        EXPECT_EQ(std::make_tuple(property(vtodo, ICAL_DTSTAMP_PROPERTY),
                                  property(vtodo, ICAL_LASTMODIFIED_PROPERTY),
                                  icalcomponent_count_properties(vtodo, ICAL_DTSTAMP_PROPERTY)),
                  std::make_tuple("20300301T120000Z", "20300301T120000Z", 1));
    }
}

TEST(TaskWriter, NewUidsAreRandomAndLookAlike) {
    std::set<std::string> uids;
    for (int i = 0; i < 100; i++) {
        std::string uid = TaskWriter::newUid();
        EXPECT_TRUE(std::regex_match(uid, std::regex("pindle-[0-9a-f]{32}"))) << uid;
        EXPECT_TRUE(uids.insert(uid).second) << uid;
    }
}

} // namespace
