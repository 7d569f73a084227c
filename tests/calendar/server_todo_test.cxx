// What a server's task becomes locally: defaults for what it lacks or holds in an odd form, and
// texts cut to their fields without splitting a character.
#include "server_todo.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>

namespace {

std::string calendar(const std::string& lines) {
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VTODO\r\nUID:u\r\n" + lines +
           "END:VTODO\r\nEND:VCALENDAR\r\n";
}

// What a row expects: priority, due date or "-", done or open, summary|category.
std::string fieldsOf(const ServerTodo& t) {
    std::string due = "-";
    if (t.hasDue)
        due = std::to_string(t.year) + "-" + std::to_string(t.month) + "-" + std::to_string(t.day);
    return std::to_string(t.priority) + " " + due + (t.completed ? " done " : " open ") +
           t.summary + "|" + t.category;
}

TEST(ServerTodo, MapsOrDefaultsEachProperty) {
    const std::pair<const char*, const char*> mapped[] = {
        {"PRIORITY:1\r\n", "1 - open |Unassigned"},
        {"PRIORITY:9\r\n", "9 - open |Unassigned"},
        {"DUE:20300704T235959Z\r\n", "5 2030-7-4 open |Unassigned"},
        {"DUE;VALUE=DATE:20280229\r\n", "5 2028-2-29 open |Unassigned"},
        {"SUMMARY:a\tb\\nc\r\nCATEGORIES:x\\ny\r\n", "5 - open a b c|x y"},
        {"PRIORITY:3\r\nDUE;VALUE=DATE:20301231\r\nSTATUS:COMPLETED\r\nSUMMARY:s\r\n"
         "CATEGORIES:Work,Home\r\n",
         "3 2030-12-31 done s|Work"}};
    ServerTodo todo; // one for all rows: a parse keeps nothing of the task parsed before
    for (const auto& [lines, fields] : mapped) {
        ASSERT_TRUE(ServerTodo::parse(calendar(lines), todo)) << lines;
        EXPECT_EQ(fieldsOf(todo), fields) << lines;
    }
    // Missing or odd values; the first comes right after the task with every field set.
    for (const char* lines :
         {"", "PRIORITY:0\r\n", "PRIORITY:10\r\n", "PRIORITY:-1\r\n", "PRIORITY:high\r\n",
          "DUE:not a date\r\n", "DUE;VALUE=DATE:20290229\r\n", "DUE;VALUE=DATE:20300431\r\n",
          "DUE;VALUE=DATE:20301301\r\n", "DUE;VALUE=DATE:20300001\r\n",
          "DUE;VALUE=DATE:20300100\r\n", "STATUS:IN-PROCESS\r\n"}) {
        ASSERT_TRUE(ServerTodo::parse(calendar(lines), todo)) << lines;
        EXPECT_EQ(fieldsOf(todo), "5 - open |Unassigned") << lines;
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
    std::set<std::uint64_t> digests;
    ServerTodo todo;
    for (const char* variant : {"DUE;VALUE=DATE:20300102\r\n", "DUE;VALUE=DATE:20310102\r\n",
                                "DUE;VALUE=DATE:20300202\r\n", "DUE;VALUE=DATE:20300103\r\n", "",
                                "DUE;VALUE=DATE:20300102\r\nSTATUS:COMPLETED\r\n",
                                "DUE;VALUE=DATE:20300102\r\nSUMMARY:t\r\n",
                                "DUE;VALUE=DATE:20300102\r\nDESCRIPTION:e\r\n",
                                "DUE;VALUE=DATE:20300102\r\nCATEGORIES:b\r\n",
                                "DUE;VALUE=DATE:20300102\r\nPRIORITY:3\r\n"}) {
        // The variant's properties come first: libical reads the first of each.
        ASSERT_TRUE(ServerTodo::parse(calendar(std::string(variant) + base), todo)) << variant;
        EXPECT_TRUE(digests.insert(todo.digest()).second) << variant;
    }
    // Without DUE a task takes the day it comes down on; its digest stays the same.
    ASSERT_TRUE(ServerTodo::parse(calendar(base), todo));
    TodoRecord record;
    todo.fill(record, {5, 6, 2031});
    EXPECT_EQ(std::make_tuple(record.year, record.month, record.day), std::make_tuple(2031, 5, 6));
}

} // namespace
