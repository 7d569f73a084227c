// What the reminders announce: lists of to-dos against a fixed today, run after run, the day's
// announcements kept in their file between the runs as the command keeps them; the texts as a
// notification service reads them; and the command line.
#include "announced_today.h"
#include "cal_date.h"
#include "due_list.h"
#include "notification_text.h"
#include "remind_options.h"
#include "support/temp_dir.h"

#include <cstdio>
#include <tuple>
#include <vector>

namespace {

TodoFields todo(const std::string& description, CalDate due, int priority = 0,
                bool completed = false) {
    TodoFields f;
    std::tie(f.month, f.day, f.year) = std::tie(due.month, due.day, due.year);
    f.priority = priority;
    f.completed = completed ? 1 : 0;
    f.description = description;
    return f;
}

// One run of the command: the to-dos added to the file first, the day it runs, and what it
// announces (the summary and the body's lines, or nothing).
struct Step {
    std::vector<TodoFields> added;
    CalDate today;
    std::string announced;
};

class RemindTest : public TempDirTest {
protected:
    std::string run(const std::vector<TodoFields>& todos, CalDate today) {
        writeFile("pindle_todo.db", todoFile(todos));
        ScopedStore<TodoStore> store;
        char day[256];
        CalDate::format(today.month, today.day, today.year, day);
        AnnouncedToday announced;
        std::string error;
        EXPECT_TRUE(announced.load(error)) << error;
        std::vector<DueTodo> news = announced.announce(
            DueList::collect(store, CalDate::dayNumber(today.month, today.day, today.year)), day);
        EXPECT_TRUE(announced.save(error)) << error;
        if (news.empty())
            return "";
        NotificationText text = NotificationText::compose(news, false);
        return text.summary + "\n" + text.body;
    }
};

TEST_F(RemindTest, AnnouncesWhatIsDueOnceADayInTheListsOrder) {
    const CalDate mar7{3, 7, 2025}, mar8{3, 8, 2025};
    TodoFields full = todo(std::string(50, 'D'), mar7, 2);
    full.notes = "runs on into the notes";
    const std::pair<const char*, std::vector<Step>> cases[] = {
        {"empty", {{{}, mar7, ""}, {{}, mar8, ""}}},
        {"tomorrow and completed",
         {{{todo("Tomorrow", mar8), todo("Done late", {3, 1, 2025}, 0, true),
            todo("Done today", mar7, 0, true)},
           mar7,
           ""},
          {{}, mar8, "1 to-do due today\nTomorrow"}}},
        // By date, then priority; of two alike in both, the later in the file first.
        {"order",
         {{{todo("A", mar7, 2), todo("B", {3, 6, 2025}, 5), todo("E", mar7), todo("Tie 1", mar7, 1),
            todo("Tie 2", mar7, 1)},
           mar7,
           "4 to-dos due today, 1 overdue\nB (due 3/6/2025)\nE\nTie 2\nTie 1\nA"},
          {{todo("F", mar7), todo("G", {3, 5, 2025}, 8)},
           mar7,
           "1 to-do due today, 1 overdue\nG (due 3/5/2025)\nF"},
          {{}, mar7, ""},
          {{},
           mar8,
           "7 to-dos overdue\nG (due 3/5/2025)\nB (due 3/6/2025)\nF (due 3/7/2025)\nE (due "
           "3/7/2025)\nTie 2 (due 3/7/2025)\nand 2 more"}}},
        {"year end",
         {{{todo("Eve", {12, 31, 2024}), todo("New year", {1, 1, 2025}),
            todo("Jan 2", {1, 2, 2025})},
           {1, 1, 2025},
           "1 to-do due today, 1 overdue\nEve (due 12/31/2024)\nNew year"},
          {{},
           {1, 2, 2025},
           "1 to-do due today, 2 overdue\nEve (due 12/31/2024)\nNew year (due 1/1/2025)\nJan 2"}}},
        {"leap day",
         {{{todo("Feb 28", {2, 28, 2024})},
           {2, 29, 2024},
           "1 to-do overdue\nFeb 28 (due 2/28/2024)"},
          {{todo("Leap", {2, 29, 2024}), todo("March", {3, 1, 2024})},
           {2, 29, 2024},
           "1 to-do due today\nLeap"},
          {{},
           {3, 1, 2024},
           "1 to-do due today, 2 overdue\nFeb 28 (due 2/28/2024)\nLeap (due "
           "2/29/2024)\nMarch"}}},
        {"alike",
         {{{todo("Call", mar7), todo("Call", mar7)}, mar7, "2 to-dos due today\nCall\nCall"},
          {{todo("Call", mar7)}, mar7, "1 to-do due today\nCall"}}},
        // A description as the list shows it: cut at its field, Latin-1 read as such.
        {"texts",
         {{{todo("", mar7), todo("Caf\xe9", mar7, 1), full},
           mar7,
           "3 to-dos due today\n(no description)\nCaf\u00e9\n" + std::string(50, 'D')}}},
    };
    for (const auto& [name, runs] : cases) {
        std::remove(AnnouncedToday::kFileName);
        std::vector<TodoFields> todos;
        for (std::size_t i = 0; i < runs.size(); i++) {
            todos.insert(todos.end(), runs[i].added.begin(), runs[i].added.end());
            EXPECT_EQ(run(todos, runs[i].today), runs[i].announced) << name << ", run " << i + 1;
        }
    }
}

// A file that is not the day's announcements is read as none: everything due is announced again.
TEST_F(RemindTest, ReadsADamagedOrForeignFileAsNothingAnnounced) {
    const std::pair<const char*, bool> cases[] = {
        {"{", false},
        {R"({"version": 1, "day": "3/7/2025", "announced": [{"due": "3/7/2025"}]})", false},
        {R"({"version": 2, "day": "3/7/2025", "announced": [{"due": "3/7/2025", "description": "A"}]})",
         true},
    };
    for (const auto& [text, readable] : cases) {
        writeFile(AnnouncedToday::kFileName, text);
        AnnouncedToday announced;
        std::string error;
        EXPECT_EQ(announced.load(error), readable) << text;
        EXPECT_EQ(error.find(AnnouncedToday::kFileName) != std::string::npos, !readable) << error;
        EXPECT_EQ(announced.announce({{"3/7/2025", "A", false}}, "3/7/2025").size(), 1u) << text;
    }
}

TEST(NotificationText, EscapesTheTextsForAServiceThatReadsMarkup) {
    const std::vector<DueTodo> todos = {{"3/5/2025", "Tom & <Jerry>", true}};
    EXPECT_EQ(NotificationText::compose(todos, true).body,
              "Tom &amp; &lt;Jerry&gt; (due 3/5/2025)");
    EXPECT_EQ(NotificationText::compose(todos, false).body, "Tom & <Jerry> (due 3/5/2025)");
}

// The options the arguments give, and the mistake in them, if any.
std::pair<RemindOptions, std::string> parse(std::vector<const char*> args) {
    args.insert(args.begin(), "pindle_remind");
    std::pair<RemindOptions, std::string> parsed;
    auto& [options, error] = parsed;
    bool ok = RemindOptions::parse(static_cast<int>(args.size()), args.data(), options, error);
    EXPECT_EQ(ok, error.empty());
    return parsed;
}

TEST(RemindOptions, ReadsTheFolderAndTheWaitOrSaysWhatIsWrong) {
    const std::tuple<std::vector<const char*>, std::string, int> accepted[] = {
        {{}, ".", 600},
        {{"--dir", "/tmp", "--wait=0"}, "/tmp", 0},
        {{"--wait", "86400"}, ".", 86400}};
    for (const auto& [args, dir, wait] : accepted) {
        auto [options, error] = parse(args);
        EXPECT_EQ(std::tie(options.dir, options.waitSeconds, error), std::tie(dir, wait, ""))
            << dir;
    }
    EXPECT_EQ(parse({"--dir="}).second, "option --dir needs a folder");
    for (const std::string wait : {"86401", "-1", "5s", ""})
        EXPECT_EQ(parse({"--wait", wait.c_str()}).second,
                  "option --wait needs a number of seconds from 0 to 86400, not '" + wait + "'");
}

} // namespace
