// A to-do as the iCalendar it goes up as: a new task, or the server's own copy with the to-do's
// fields put on it and everything else kept; stamped with the time of the upload either way.
#include "server_todo.h"
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

TEST(TaskWriter, BuildsANewTaskOrPutsTheFieldsOnTheServersCopy) {
    auto record = todoRecord({3, 1, 2030, 2, 1, "Work", "Ship it", "line 1\nline 2"});
    const std::string server = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//phone//EN\r\n"
                               "BEGIN:VTODO\r\nUID:theirs\r\nDTSTAMP:20200101T000000Z\r\n"
                               "SUMMARY:old\r\nX-KEPT:yes\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";
    // The server's copy (none, a task, no task), and whether the upload is built on it.
    const std::pair<std::string, bool> cases[] = {
        {"", false}, {server, true}, {"BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n", false}};
    for (const auto& [serverIcs, onTheirs] : cases) {
        SCOPED_TRACE(serverIcs);
        // 2030-03-01T12:00:00Z
        std::string ics = TaskWriter::build(*record, "mine", serverIcs, 1898596800);
        Component calendar(icalparser_parse_string(ics.c_str()), &icalcomponent_free);
        ASSERT_TRUE(calendar);
        icalcomponent* vtodo =
            icalcomponent_get_first_component(calendar.get(), ICAL_VTODO_COMPONENT);
        ASSERT_NE(vtodo, nullptr);
        EXPECT_EQ(property(calendar.get(), ICAL_PRODID_PROPERTY),
                  onTheirs ? "-//phone//EN" : "-//Pindle ToDo//pindle_sync//EN");
        EXPECT_EQ(property(vtodo, ICAL_UID_PROPERTY), onTheirs ? "theirs" : "mine");
        EXPECT_EQ(property(vtodo, ICAL_X_PROPERTY), onTheirs ? "yes" : "-");
        EXPECT_EQ(property(vtodo, ICAL_DTSTAMP_PROPERTY), "20300301T120000Z");
        EXPECT_EQ(property(vtodo, ICAL_LASTMODIFIED_PROPERTY), "20300301T120000Z");
        EXPECT_EQ(icalcomponent_count_properties(vtodo, ICAL_DTSTAMP_PROPERTY), 1);
        ServerTodo read;
        ASSERT_TRUE(ServerTodo::parse(ics, read));
        EXPECT_EQ(std::tie(read.summary, read.notes, read.category, read.year, read.month, read.day,
                           read.priority, read.completed),
                  std::make_tuple("Ship it", "line 1\nline 2", "Work", 2030, 3, 1, 3, true));
    }
}

// On the server's copy only the fields asked for change: what the task lacked stays absent,
// whatever the record holds there. A new task gets every field.
TEST(TaskWriter, PutsOnlyTheFieldsAskedOnTheServersCopy) {
    using namespace TodoField;
    auto record = todoRecord({3, 1, 2030, 4, 1, "Work", "Mine", "new notes"});
    const std::string server = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//phone//EN\r\n"
                               "BEGIN:VTODO\r\nUID:theirs\r\nDTSTAMP:20200101T000000Z\r\n"
                               "SUMMARY:Theirs\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";
    const std::tuple<std::string, Set, const char*> cases[] = {
        {server, Set().set(Notes), "Theirs|new notes|-|-|-|-"},
        {server, Set().set(Date).set(Completed), "Theirs|-|20300301|-|COMPLETED|-"},
        {server, Set().set(Priority).set(Category).set(Description), "Mine|-|-|5|-|Work"},
        {"", Set().set(Notes), "Mine|new notes|20300301|5|COMPLETED|Work"}};
    for (const auto& [serverIcs, fields, expected] : cases) {
        Component calendar(
            icalparser_parse_string(
                TaskWriter::build(*record, "mine", serverIcs, 1898596800, fields).c_str()),
            &icalcomponent_free);
        icalcomponent* vtodo =
            icalcomponent_get_first_component(calendar.get(), ICAL_VTODO_COMPONENT);
        ASSERT_NE(vtodo, nullptr);
        std::string got;
        for (icalproperty_kind kind :
             {ICAL_SUMMARY_PROPERTY, ICAL_DESCRIPTION_PROPERTY, ICAL_DUE_PROPERTY,
              ICAL_PRIORITY_PROPERTY, ICAL_STATUS_PROPERTY, ICAL_CATEGORIES_PROPERTY})
            got += (got.empty() ? "" : "|") + property(vtodo, kind);
        EXPECT_EQ(got, expected) << fields;
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
