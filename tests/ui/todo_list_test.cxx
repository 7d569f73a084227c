// The main window: the start, the to-do lines and their order, the filter, the tab switch,
// Delete and Purge with their questions, a category's Delete, and the browser's format codes
// in names and descriptions, which no dialog refuses.
#include "support/ui_fixture.h"

#include <climits>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

using TodoList = UiTest;

TodoFields todo(CalDate due, int priority, const std::string& description,
                const std::string& category = "Work", unsigned char completed = 0) {
    return {due.month, due.day, due.year, priority, completed, category, description, ""};
}

const std::string kCategories = categoryFile({"Unassigned", "Work"});

TEST_F(TodoList, StartsOnTheCategoryTabWithEverythingFilledAndNothingWritten) {
    EXPECT_EQ(start(), "could not open file pindle_todo.db\nskipping over reading record\n"
                       "could not open file cat.db\nskipping over reading record\n");
    EXPECT_EQ(win->tabs->value(), win->categoryGroup);
    EXPECT_EQ(lines(win->categoryBrowser), Lines{"Unassigned"});
    EXPECT_STREQ(win->categoryFilter->text(), "All");
    EXPECT_EQ(win->todayOutput->value(), dateText(fromToday(0)));
    EXPECT_FALSE(exists("pindle_todo.db") || exists("cat.db"));
}

// Lines by day number, then priority, exact ties the reverse of the store; overdue lines red,
// completed ones (any non-zero flag) struck through and listed only with "Show Completed". A
// plain line lets the browser read codes at the start of a column, the others show them
// literally. Priorities a damaged file holds are shown plus one without overflowing.
TEST_F(TodoList, LinesTheirFormsAndTheirOrder) {
    CalDate today = fromToday(0), late = fromToday(-1);
    std::string t = dateText(today), y = dateText(late);
    start(todoFile({todo(today, 0, "@bbold"), todo(late, 998, "@late"),
                    todo(late, 2, "done", "Home", 7), todo({3, 1, 2004}, 0, "mar 1"),
                    todo({2, 29, 2004}, 1, "tie first"), todo({2, 29, 2004}, 1, "tie second"),
                    todo({2, 29, 2004}, 0, "leap day"), todo({1, 1, 2999}, INT_MAX, "high"),
                    todo({1, 1, 2999}, INT_MIN, "low")}),
          kCategories);
    Lines open = {"@C1@.1\t@C1@.2/29/2004\t@C1@.Work\t@C1@.leap day",
                  "@C1@.2\t@C1@.2/29/2004\t@C1@.Work\t@C1@.tie second",
                  "@C1@.2\t@C1@.2/29/2004\t@C1@.Work\t@C1@.tie first",
                  "@C1@.1\t@C1@.3/1/2004\t@C1@.Work\t@C1@.mar 1",
                  "@C1@.999\t@C1@." + y + "\t@C1@.Work\t@C1@.@late",
                  "1\t" + t + "\tWork\t@bbold",
                  "-2147483647\t1/1/2999\tWork\tlow",
                  "2147483648\t1/1/2999\tWork\thigh"};
    EXPECT_EQ(todoLines(), open);
    win->showCompletedButton->value(1);
    win->showCompletedButton->do_callback();
    open.insert(open.end() - 4, "@-@.3\t@-@." + y + "\t@-@.Home\t@-@.done");
    EXPECT_EQ(todoLines(), open);
}

TEST_F(TodoList, TheFilterShowsOneCategoryExactlyAndAnEmptyChoiceNone) {
    CalDate d = fromToday(1);
    start(todoFile({todo(d, 0, "a"), todo(d, 0, "b", "work"), todo(d, 0, "c", "Work ")}),
          kCategories);
    filterBy("Work");
    EXPECT_EQ(todoLines(), Lines{"1\t" + dateText(d) + "\tWork\ta"});
    win->categoryFilter->clear(); // as at start-up: no entry, no text
    win->fillTodoBrowser();
    EXPECT_EQ(todoLines().size(), 3u);
}

// Vanished categories become "Unassigned" and the file is rewritten, changed or not; the list
// keeps the old filter until the next rebuild although the choice reads "All" again.
TEST_F(TodoList, ATabSwitchReassignsSavesAndKeepsTheOldFilterForOneRebuild) {
    CalDate d = fromToday(1);
    start(todoFile({todo(d, 0, "a"), todo(d, 1, "b", "Gone"), todo(d, 2, "c")}) + "partial",
          kCategories);
    switchTab();
    EXPECT_TRUE(readFile("pindle_todo.db") ==
                todoFile({todo(d, 0, "a"), todo(d, 1, "b", "Unassigned"), todo(d, 2, "c")}));
    filterBy("Work");
    const std::string saved = readFile("pindle_todo.db");
    const timespec longAgo[2] = {{0, 0}, {0, 0}};
    utimensat(AT_FDCWD, "pindle_todo.db", longAgo, 0);
    switchTab();
    struct stat after {};
    stat("pindle_todo.db", &after);
    EXPECT_GT(after.st_mtim.tv_sec, 0);
    EXPECT_TRUE(readFile("pindle_todo.db") == saved);
    EXPECT_STREQ(win->categoryFilter->text(), "All");
    EXPECT_EQ(todoLines().size(), 2u);
    win->fillTodoBrowser();
    EXPECT_EQ(todoLines().size(), 3u);
}

// Each question's answers: "Yes" changes the files, "No" leaves them; Delete asks only with a
// line selected and removes that line's record (a duplicate name goes by its line); Purge also
// removes completed to-dos the list does not show; "Unassigned" is refused after the question.
TEST_F(TodoList, EachQuestionAndItsAnswers) {
    CalDate d = fromToday(1);
    const auto keep = todo(d, 0, "keep"), drop = todo(d, 5, "drop"),
               done = todo(d, 0, "done", "Home", 1);
    const std::string todos = todoFile({keep, drop, done});
    const std::string categories = categoryFile({"Unassigned", "Work", "Work"});
    const std::string deleteTodo = "Do you really want to delete the To-Do Item?",
                      purge = "Do you really want to purge all completed to-do records?",
                      deleteCategory = "Do you really want to delete the category Item?",
                      refusal = "You can not delete the Unassigned category!";
    const std::tuple<Fl_Button * TodoWindow::*, int, Lines, Lines, std::string, std::string>
        cases[] = {
            {&TodoWindow::deleteTodoButton, 0, {}, {}, todos, categories},
            {&TodoWindow::deleteTodoButton, 2, {"No"}, {deleteTodo}, todos, categories},
            {&TodoWindow::deleteTodoButton,
             2,
             {"Yes"},
             {deleteTodo},
             todoFile({keep, done}),
             categories},
            {&TodoWindow::purgeButton, 0, {"No"}, {purge}, todos, categories},
            {&TodoWindow::purgeButton, 0, {"Yes"}, {purge}, todoFile({keep, drop}), categories},
            {&TodoWindow::deleteCategoryButton, 0, {}, {}, todos, categories},
            {&TodoWindow::deleteCategoryButton, 1, {"No"}, {deleteCategory}, todos, categories},
            {&TodoWindow::deleteCategoryButton,
             1,
             {"Yes", "Close"},
             {deleteCategory, refusal},
             todos,
             categories},
            {&TodoWindow::deleteCategoryButton, 3, {"No"}, {deleteCategory}, todos, categories},
            {&TodoWindow::deleteCategoryButton,
             3,
             {"Yes"},
             {deleteCategory},
             todos,
             categoryFile({"Unassigned", "Work"})},
        };
    for (const auto& [button, line, answers, asked, todosAfter, categoriesAfter] : cases) {
        start(todos, categories);
        boxes.clear();
        Fl_Browser* list =
            button == &TodoWindow::deleteCategoryButton ? win->categoryBrowser : win->todoBrowser;
        if (list == win->todoBrowser)
            filterBy("Work"); // the completed one is listed nowhere
        list->value(line);
        if (!answers.empty())
            answer(answers);
        ((*win).*button)->do_callback();
        EXPECT_EQ(boxes, asked) << line;
        EXPECT_TRUE(readFile("pindle_todo.db") == todosAfter) << asked.size() << line;
        EXPECT_TRUE(readFile("cat.db") == categoriesAfter) << asked.size() << line;
        EXPECT_EQ(list->value(), answers == Lines{"Yes"} ? 0 : line); // rebuilt: none selected
        if (answers == Lines{"Yes"} && line == 3) {
            EXPECT_EQ(categoryStore.at(1)->name, std::string("Work")); // the first one stays
        }
    }
}

// Codes are read where the browser reads them: at the start of a category name, and at the
// start of each of the to-do list's five columns. Only those that would crash the toolkit or
// end the program are shown as typed instead: fonts outside 0-15 and sizes above 2000, as the
// codes leave them. Every line here is drawn.
TEST_F(TodoList, FormatCodesAreObeyedUnlessTheyBreakTheToolkit) {
    Lines names = {"@F15@S2000x",    "@S0@S-9x",  "@F16x",       "@F-1x",    "@S2001x",
                   "@S99999999999x", "@F14@b@ix", "@F12@b@F16x", "@F99@F1x", "@S99999@lx",
                   "@B5@F16x",       "a\t@F16x",  "@@F16x"};
    names.push_back("@F16" + std::string(46, 'y')); // a whole name keeps its room for "@."
    start(todoFile({{6, 15, 2999, 0, 0, "@F99999x", "x\t@S99999y", ""},
                    {6, 15, 2999, 0, 0, "Work", "a\tb\t@F99", ""},
                    {6, 15, 2004, 0, 0, "a\t@F16", "r", ""}}),
          categoryFile(names));
    Fl::flush(); // drawn now, under the sanitizers too
    EXPECT_EQ(lines(win->categoryBrowser),
              (Lines{"@F15@S2000x", "@S0@S-9x", "@.@F16x", "@.@F-1x", "@.@S2001x",
                     "@.@S99999999999x", "@F14@b@ix", "@.@F12@b@F16x", "@F99@F1x", "@S99999@lx",
                     "@.@B5@F16x", "a\t@F16x", "@@F16x", "@.@F16" + std::string(46, 'y')}));
    win->tabs->value(win->todoGroup); // no tab switch: the categories stay as they are
    Fl::flush();                      // drawn now, under the sanitizers too
    EXPECT_EQ(todoLines(),
              (Lines{"@C1@.1\t@C1@.6/15/2004\t@C1@.a\t@.@F16\t@C1@.r",
                     "1\t6/15/2999\tWork\ta\tb\t@F99", "1\t6/15/2999\t@.@F99999x\tx\t@.@S99999y"}));
}

} // namespace
