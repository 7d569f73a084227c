// What a server's task becomes locally: defaults for what it lacks or holds in an odd form, and
// texts cut to their fields without splitting a character.
#include "server_todo.h"
#include "support/store_helpers.h"
#include "todo_view.h"

#include <gtest/gtest.h>

#include <map>
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

// Each property moves its own field's digest and no other; a task without DUE or PRIORITY has a
// value of its own there, not the date or priority a fill gives it.
TEST(ServerTodo, EachPropertyMovesItsOwnFieldDigest) {
    using namespace TodoField;
    const std::map<std::string, std::string> base = {
        {"SUMMARY", "s"},  {"DESCRIPTION", "d"},           {"CATEGORIES", "c"},
        {"PRIORITY", "2"}, {"DUE;VALUE=DATE", "20300102"}, {"STATUS", "NEEDS-ACTION"}};
    auto digests = [](const std::map<std::string, std::string>& props) {
        std::string lines;
        for (const auto& [name, value] : props)
            lines += value.empty() ? "" : name + ":" + value + "\r\n";
        ServerTodo todo;
        EXPECT_TRUE(ServerTodo::parse(calendar(lines), todo)) << lines;
        return todo.fieldDigests();
    };
    const auto before = digests(base);
    const std::tuple<const char*, const char*, Index> changes[] = {
        {"DUE;VALUE=DATE", "20310102", Date}, {"DUE;VALUE=DATE", "20300202", Date},
        {"DUE;VALUE=DATE", "20300103", Date}, {"DUE;VALUE=DATE", "", Date},
        {"PRIORITY", "3", Priority},          {"PRIORITY", "", Priority},
        {"STATUS", "COMPLETED", Completed},   {"CATEGORIES", "b", Category},
        {"SUMMARY", "t", Description},        {"DESCRIPTION", "e", Notes}};
    for (const auto& [name, value, field] : changes) {
        auto props = base;
        props[name] = value;
        const auto after = digests(props);
        for (int f = 0; f < kCount; f++)
            EXPECT_EQ(after[f] != before[f], f == field) << name << ":" << value << " field " << f;
    }
}

// A fill of some fields leaves the others as they were, texts included: a 50-byte summary,
// whose terminator falls on the notes, leaves the notes whole.
TEST(ServerTodo, FillsOnlyTheFieldsAsked) {
    using namespace TodoField;
    ServerTodo todo;
    ASSERT_TRUE(ServerTodo::parse(calendar("SUMMARY:" + std::string(50, 'x') +
                                           "\r\nDESCRIPTION:theirs\r\nPRIORITY:1\r\n"
                                           "CATEGORIES:Theirs\r\nSTATUS:COMPLETED\r\n"),
                                  todo));
    const std::pair<Set, const char*> cases[] = {
        {Set().set(Description),
         "1 2 2030 4 0 Mine|xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx|notes"},
        {Set().set(Category).set(Priority), "1 2 2030 0 0 Theirs|mine|notes"},
        {Set().set(Notes).set(Completed), "1 2 2030 4 1 Mine|mine|theirs"},
        {Set().set(Date), "5 6 2031 4 0 Mine|mine|notes"},
        {all(), "5 6 2031 0 1 Theirs|xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx|theirs"}};
    for (const auto& [fields, expected] : cases) {
        auto record = todoRecord({1, 2, 2030, 4, 0, "Mine", "mine", "notes"});
        todo.fill(*record, {5, 6, 2031}, fields);
        TodoView view(*record);
        EXPECT_EQ(std::to_string(record->month) + " " + std::to_string(record->day) + " " +
                      std::to_string(record->year) + " " + std::to_string(record->priority) + " " +
                      std::to_string(record->completed) + " " + view.category() + "|" +
                      view.description() + "|" + view.notes(),
                  expected)
            << fields;
    }
}

} // namespace
