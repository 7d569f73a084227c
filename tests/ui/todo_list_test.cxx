// The main window and its to-do tab: start-up state, the widget tree, the three line forms,
// sort order, filtering, and the handlers that save and rebuild.
#include "cal_date.h"
#include "support/store_helpers.h"
#include "support/ui_fixture.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Group.H>
#include <FL/Fl_Output.H>
#include <FL/Fl_Tabs.H>

namespace {

using Lines = std::vector<std::string>;

CalDate today() {
    CalDate d{};
    CalDate::today(d.month, d.day, d.year);
    return d;
}

TodoFields todo(CalDate date, int priority, const std::string& description,
                const std::string& category = "Unassigned", unsigned char completed = 0) {
    TodoFields f;
    f.month = date.month, f.day = date.day, f.year = date.year;
    f.priority = priority;
    f.description = description;
    f.category = category;
    f.completed = completed;
    return f;
}

std::string dateText(CalDate d) {
    char buf[256];
    CalDate::format(d.month, d.day, d.year, buf);
    return buf;
}

std::string files(const std::vector<TodoFields>& records) {
    std::string bytes;
    for (const auto& r : records)
        bytes += todoBytes(r);
    return bytes;
}

const std::string kCategories = categoryBytes("Unassigned") + categoryBytes("Work");

using TodoList = UiTest;

TEST_F(TodoList, StartsOnTheCategoryTabWithEverythingFilled) {
    std::string messages = start();
    EXPECT_EQ(messages, "could not open file pindle_todo.db\nskipping over reading record\n"
                        "could not open file cat.db\nskipping over reading record\n");
    EXPECT_EQ(win->tabs->value(), win->categoryGroup);
    EXPECT_FALSE(win->todoGroup->visible());
    EXPECT_EQ(lines(win->categoryBrowser), Lines{"Unassigned"});
    EXPECT_EQ(win->categoryFilter->size(), 3); // "All", "Unassigned" and the terminator
    EXPECT_EQ(win->categoryFilter->value(), 0);
    EXPECT_STREQ(win->categoryFilter->text(), "All");
    EXPECT_EQ(win->todoBrowser->size(), 0);
    EXPECT_EQ(win->todayOutput->value(), todayText());
    EXPECT_FALSE(win->todayOutput->active());
    EXPECT_EQ(win->showCompletedButton->value(), 0);
    const int* widths = win->todoBrowser->column_widths();
    EXPECT_EQ(std::vector<int>(widths, widths + 5), (std::vector<int>{20, 100, 100, 100, 0}));
    EXPECT_EQ(win->todoBrowser->column_char(), '\t');
    EXPECT_TRUE(win->window->shown());
    EXPECT_STREQ(win->window->label(), "To Do List");
    EXPECT_FALSE(exists("pindle_todo.db"));
    EXPECT_FALSE(exists("cat.db"));
}

TEST_F(TodoList, WidgetsStandWhereAndInTheOrderTheyWereBuilt) {
    start();
    struct Row {
        Fl_Widget* widget;
        Fl_Group* parent;
        int index, x, y, w, h;
        const char* label;
    } rows[] = {
        {win->showCompletedButton, win->window, 0, 280, 5, 25, 25, "&Show Completed"},
        {win->todayOutput, win->window, 1, 400, 5, 95, 25, "Today's Date:"},
        {win->purgeButton, win->window, 2, 500, 5, 60, 25, "&Purge"},
        {win->aboutButton, win->window, 3, 565, 5, 60, 25, "&About"},
        {win->tabs, win->window, 4, 5, 25, 630, 455, nullptr},
        {win->todoGroup, win->tabs, 0, 5, 50, 620, 430, "Todo List"},
        {win->todoBrowser, win->todoGroup, 0, 15, 110, 605, 365, "To-Do List"},
        {win->newTodoButton, win->todoGroup, 1, 450, 65, 50, 25, "&New"},
        {win->deleteTodoButton, win->todoGroup, 2, 565, 65, 55, 25, "&Delete"},
        {win->editTodoButton, win->todoGroup, 3, 510, 65, 45, 25, "&Edit"},
        {win->categoryFilter, win->todoGroup, 4, 75, 65, 345, 25, "Ca&tegory:"},
        {win->categoryGroup, win->tabs, 1, 10, 55, 610, 423, "Category"},
        {win->categoryBrowser, win->categoryGroup, 0, 80, 105, 435, 280, "Category List"},
        {win->newCategoryButton, win->categoryGroup, 1, 360, 420, 65, 25, "&New"},
        {win->editCategoryButton, win->categoryGroup, 2, 435, 420, 65, 25, "&Edit"},
        {win->deleteCategoryButton, win->categoryGroup, 3, 510, 420, 65, 25, "&Delete"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.label ? r.label : "(tabs)");
        EXPECT_EQ(r.parent->child(r.index), r.widget);
        EXPECT_EQ((std::vector<int>{r.widget->x(), r.widget->y(), r.widget->w(), r.widget->h()}),
                  (std::vector<int>{r.x, r.y, r.w, r.h}));
        EXPECT_STREQ(r.widget->label(), r.label);
    }
    EXPECT_EQ(win->window->children(), 5);
    EXPECT_EQ(win->window->resizable(), win->window);
    EXPECT_EQ(win->window->user_data(), win.get());
    EXPECT_EQ(win->window->align(), 33);
    EXPECT_EQ(win->showCompletedButton->when(), FL_WHEN_CHANGED);
    EXPECT_EQ(win->todoBrowser->when(), FL_WHEN_NOT_CHANGED);
    EXPECT_EQ(win->todoBrowser->type(), FL_HOLD_BROWSER);
}

TEST_F(TodoList, ThreeLineFormsWithTheirCodes) {
    CalDate now = today();
    CalDate yesterday = CalDate::addDays(now, -1);
    std::string todoFile = files({todo(now, 0, "plain"), todo(yesterday, 998, "@late", "Work"),
                                  todo(yesterday, 2, "done", "Home", 1)});
    start(&todoFile, &kCategories);
    std::string t = dateText(now), y = dateText(yesterday);
    EXPECT_EQ(todoLines(), (Lines{"@C1@.999\t@C1@." + y + "\t@C1@.Work\t@C1@.@late",
                                  "1\t" + t + "\tUnassigned\tplain"}));
    win->showCompletedButton->value(1);
    win->showCompletedButton->do_callback();
    EXPECT_EQ(todoLines(), (Lines{"@-@.3\t@-@." + y + "\t@-@.Home\t@-@.done",
                                  "@C1@.999\t@C1@." + y + "\t@C1@.Work\t@C1@.@late",
                                  "1\t" + t + "\tUnassigned\tplain"}));
}

TEST_F(TodoList, SortsByDayNumberThenPriorityWithTiesReversed) {
    std::string todoFile = files({
        todo({3, 1, 2005}, 0, "mar 1 2005"),
        todo({2, 28, 2005}, 0, "feb 28 2005"),
        todo({3, 1, 2004}, 0, "mar 1 2004"),
        todo({2, 29, 2004}, 4, "feb 29 2004 p5"),
        todo({2, 29, 2004}, 1, "tie first in store"),
        todo({2, 29, 2004}, 1, "tie second in store"),
        todo({12, 31, 2003}, 8, "dec 31 2003"),
        todo({1, 1, 2004}, 0, "jan 1 2004"),
    });
    start(&todoFile, &kCategories);
    Lines descriptions;
    for (const auto& line : todoLines())
        descriptions.push_back(line.substr(line.rfind('\t') + 6)); // past "@C1@.": all overdue
    EXPECT_EQ(descriptions,
              (Lines{"dec 31 2003", "jan 1 2004", "tie second in store", "tie first in store",
                     "feb 29 2004 p5", "mar 1 2004", "feb 28 2005", "mar 1 2005"}));
}

TEST_F(TodoList, FilterShowsExactCategoryAndAnEmptyChoiceMeansNoFilter) {
    CalDate now = today();
    std::string todoFile = files({todo(now, 0, "a", "Work"), todo(now, 0, "b", "work"),
                                  todo(now, 0, "c", "Unassigned"), todo(now, 0, "d", "Work ")});
    start(&todoFile, &kCategories);
    filterBy("Work");
    EXPECT_EQ(todoLines(), Lines{"1\t" + dateText(now) + "\tWork\ta"});
    filterBy("All");
    EXPECT_EQ(todoLines().size(), 4u);
    win->categoryFilter->clear(); // as at start-up: value -1, no text
    win->fillTodoBrowser();
    EXPECT_EQ(todoLines().size(), 4u);
}

TEST_F(TodoList, TabSwitchReassignsVanishedCategoriesSavesAndKeepsOldFilter) {
    CalDate now = today();
    std::string todoFile =
        files({todo(now, 0, "a", "Work"), todo(now, 1, "b", "Gone"), todo(now, 2, "c", "Work")});
    todoFile += "partial"; // a rewrite drops it, showing the file was saved
    start(&todoFile, &kCategories);
    switchTab();
    EXPECT_EQ(win->tabs->value(), win->todoGroup);
    std::string saved = readFile("pindle_todo.db");
    ASSERT_EQ(saved.size(), 3 * 32124u);
    EXPECT_EQ(saved.substr(32124 + 17, 11), std::string("Unassigned\0", 11));
    EXPECT_EQ(saved.substr(17, 5), std::string("Work\0", 5));

    filterBy("Work");
    ASSERT_EQ(todoLines().size(), 2u);
    writeFile("pindle_todo.db", "");
    switchTab();
    EXPECT_EQ(readFile("pindle_todo.db").size(), 3 * 32124u); // saved without any change
    EXPECT_EQ(win->categoryFilter->value(), 0);
    EXPECT_EQ(todoLines().size(), 2u); // still filtered by "Work" until the next rebuild
    win->fillTodoBrowser();
    EXPECT_EQ(todoLines().size(), 3u);
}

TEST_F(TodoList, DeleteAsksOnlyWithASelectionAndRemovesThatRecord) {
    CalDate now = today();
    std::string todoFile = files({todo(now, 0, "keep"), todo(now, 5, "drop")});
    start(&todoFile, &kCategories);
    win->deleteTodoButton->do_callback(); // nothing selected: no question at all
    EXPECT_TRUE(boxes.empty());

    selectLine(win->todoBrowser, 2);
    answer({"No"});
    win->deleteTodoButton->do_callback();
    EXPECT_EQ(boxes, Lines{"Do you really want to delete the To-Do Item?"});
    EXPECT_EQ(todoLines().size(), 2u);

    selectLine(win->todoBrowser, 2);
    answer({"Yes"});
    win->deleteTodoButton->do_callback();
    EXPECT_EQ(todoLines(), Lines{"1\t" + dateText(now) + "\tUnassigned\tkeep"});
    EXPECT_EQ(win->todoBrowser->value(), 0);
    std::string saved = readFile("pindle_todo.db");
    ASSERT_EQ(saved.size(), 32124u);
    EXPECT_EQ(saved.substr(67, 5), std::string("keep\0", 5));
}

TEST_F(TodoList, PurgeAlwaysAsksAndRemovesCompletedEvenWhenHidden) {
    CalDate now = today();
    std::string open = files({todo(now, 0, "open")}) + "tail";
    start(&open, &kCategories);
    answer({"No"});
    win->purgeButton->do_callback();
    EXPECT_EQ(readFile("pindle_todo.db").size(), 32124u + 4); // untouched
    answer({"Yes"});
    win->purgeButton->do_callback();
    EXPECT_EQ(boxes, (Lines{"Do you really want to purge all completed to-do records?",
                            "Do you really want to purge all completed to-do records?"}));
    EXPECT_EQ(readFile("pindle_todo.db").size(), 32124u); // rewritten with nothing to purge

    todoStore.append(new TodoRecord);
    todoStore.at(1)->completed = 1;
    todoStore.at(1)->setCategory("Work");
    filterBy("Unassigned");
    answer({"Yes"});
    win->purgeButton->do_callback();
    EXPECT_EQ(todoStore.count(), 1);
    EXPECT_EQ(readFile("pindle_todo.db").size(), 32124u);
}

TEST_F(TodoList, MenuSyntaxInCategoryNamesSplitsFilterEntries) {
    CalDate now = today();
    std::string cats = categoryBytes("Unassigned") + categoryBytes("a|b") + categoryBytes("x/y");
    std::string todoFile = files({todo(now, 0, "piped", "a|b")});
    start(&todoFile, &cats);
    EXPECT_NE(win->categoryFilter->find_item("a"), nullptr);
    EXPECT_NE(win->categoryFilter->find_item("b"), nullptr);
    EXPECT_NE(win->categoryFilter->find_item("x/y"), nullptr);
    filterBy("a");
    EXPECT_TRUE(todoLines().empty()); // no entry's text equals "a|b"

    // The entry dialog cannot select "a|b" either: it opens on the first entry. The submenu
    // title "x" is never selected as if it were a category.
    filterBy("All");
    selectLine(win->todoBrowser, 1);
    win->editTodoButton->do_callback();
    EXPECT_EQ(entryDialog.categoryChoice->value(), 0);
    todoStore.head->setCategory("x");
    win->editTodoButton->do_callback();
    EXPECT_EQ(entryDialog.categoryChoice->value(), 0);
    todoStore.head->setCategory("y");
    win->editTodoButton->do_callback();
    EXPECT_STREQ(entryDialog.categoryChoice->text(), "y");
}

} // namespace
