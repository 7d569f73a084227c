// What a server's task becomes locally: defaults for what it lacks or holds in an odd form, and
// texts cut to their fields without splitting a character.
#include "server_todo.h"

#include <gtest/gtest.h>

#include <iterator>
#include <set>
#include <string>

namespace {

std::string calendar(const std::string& lines) {
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VTODO\r\nUID:u\r\n" + lines +
           "END:VTODO\r\nEND:VCALENDAR\r\n";
}

TEST(ServerTodo, MapsOrDefaultsEachProperty) {
    struct Case {
        const char* lines;
        int priority;
        bool hasDue;
        int month, day, year;
        bool completed;
        const char* summary;
        const char* category;
    } cases[] = {
        {"PRIORITY:3\r\nDUE;VALUE=DATE:20301231\r\nSTATUS:COMPLETED\r\nSUMMARY:s\r\n"
         "CATEGORIES:Work,Home\r\n",
         3, true, 12, 31, 2030, true, "s", "Work"},
        {"", 5, false, 0, 0, 0, false, "", "Unassigned"},
        {"PRIORITY:1\r\n", 1, false, 0, 0, 0, false, "", "Unassigned"},
        {"PRIORITY:9\r\n", 9, false, 0, 0, 0, false, "", "Unassigned"},
        {"PRIORITY:0\r\n", 5, false, 0, 0, 0, false, "", "Unassigned"},
        {"PRIORITY:10\r\n", 5, false, 0, 0, 0, false, "", "Unassigned"},
        {"PRIORITY:-1\r\n", 5, false, 0, 0, 0, false, "", "Unassigned"},
        {"PRIORITY:high\r\n", 5, false, 0, 0, 0, false, "", "Unassigned"},
        {"DUE:20300704T235959Z\r\n", 5, true, 7, 4, 2030, false, "", "Unassigned"},
        {"DUE:not a date\r\n", 5, false, 0, 0, 0, false, "", "Unassigned"},
        {"DUE;VALUE=DATE:20280229\r\n", 5, true, 2, 29, 2028, false, "", "Unassigned"},
        {"DUE;VALUE=DATE:20290229\r\n", 5, false, 0, 0, 0, false, "", "Unassigned"},
        {"DUE;VALUE=DATE:20300431\r\n", 5, false, 0, 0, 0, false, "", "Unassigned"},
        {"DUE;VALUE=DATE:20301301\r\n", 5, false, 0, 0, 0, false, "", "Unassigned"},
        {"DUE;VALUE=DATE:20300001\r\n", 5, false, 0, 0, 0, false, "", "Unassigned"},
        {"DUE;VALUE=DATE:20300100\r\n", 5, false, 0, 0, 0, false, "", "Unassigned"},
        {"STATUS:IN-PROCESS\r\n", 5, false, 0, 0, 0, false, "", "Unassigned"},
        {"SUMMARY:a\tb\\nc\r\nCATEGORIES:x\\ny\r\n", 5, false, 0, 0, 0, false, "a b c", "x y"},
    };
    ServerTodo todo; // one for all rows: a parse keeps nothing of the task parsed before
    for (const Case& c : cases) {
        ASSERT_TRUE(ServerTodo::parse(calendar(c.lines), todo)) << c.lines;
        EXPECT_EQ(todo.priority, c.priority) << c.lines;
        EXPECT_EQ(todo.hasDue, c.hasDue) << c.lines;
        if (c.hasDue) {
            EXPECT_EQ(todo.month, c.month) << c.lines;
            EXPECT_EQ(todo.day, c.day) << c.lines;
            EXPECT_EQ(todo.year, c.year) << c.lines;
        }
        EXPECT_EQ(todo.completed, c.completed) << c.lines;
        EXPECT_EQ(todo.summary, c.summary) << c.lines;
        EXPECT_EQ(todo.category, c.category) << c.lines;
    }
}

TEST(ServerTodo, RefusesWhatHoldsNoTask) {
    ServerTodo todo;
    for (const char* ics : {"", "garbage", "BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n",
                            "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:e\r\nEND:VEVENT\r\n"})
        EXPECT_FALSE(ServerTodo::parse(ics, todo)) << ics;
}

// A change to any one mapped field changes the digest; so does losing the due date.
TEST(ServerTodo, DigestFollowsEveryMappedField) {
    const char* base = "SUMMARY:s\r\nDESCRIPTION:d\r\nCATEGORIES:c\r\nPRIORITY:2\r\n";
    const char* variants[] = {
        "DUE;VALUE=DATE:20300102\r\n",
        "DUE;VALUE=DATE:20310102\r\n",
        "DUE;VALUE=DATE:20300202\r\n",
        "DUE;VALUE=DATE:20300103\r\n",
        "",
        "DUE;VALUE=DATE:20300102\r\nSTATUS:COMPLETED\r\n",
        "DUE;VALUE=DATE:20300102\r\nSUMMARY:t\r\n",
        "DUE;VALUE=DATE:20300102\r\nDESCRIPTION:e\r\n",
        "DUE;VALUE=DATE:20300102\r\nCATEGORIES:b\r\n",
        "DUE;VALUE=DATE:20300102\r\nPRIORITY:3\r\n",
    };
    std::set<std::uint64_t> digests;
    for (const char* variant : variants) {
        ServerTodo todo;
        // The variant's properties come first: libical reads the first of each.
        ASSERT_TRUE(ServerTodo::parse(calendar(std::string(variant) + base), todo)) << variant;
        digests.insert(todo.digest());
    }
    EXPECT_EQ(digests.size(), std::size(variants));
    // Without DUE a task takes the day it comes down on; its digest stays the same.
    ServerTodo undated;
    ASSERT_TRUE(ServerTodo::parse(calendar(base), undated));
    TodoRecord record;
    undated.fill(record, {5, 6, 2031});
    EXPECT_EQ(record.month * 100 + record.day, 506);
    EXPECT_EQ(record.year, 2031);
}

} // namespace
