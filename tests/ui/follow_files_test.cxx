// The window beside other programs writing its files: what they write is shown within a
// second, keeping the tab, the filter, "Show Completed" and the selections where they still
// apply; the window's own saves cause no reload; a person's change goes to the to-dos and
// categories as they are then, an edit of a to-do changed elsewhere kept beside that version.
#include "support/ui_fixture.h"

#include <chrono>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

using FollowFiles = UiTest;

// The window must follow with inotify where a process can have it, and with the one-second
// check where it cannot (the suite runs these tests once more with inotify taken away).
double followBound() {
    int fd = inotify_init1(IN_CLOEXEC);
    if (fd < 0)
        return 1.5;
    close(fd);
    return 0.5;
}

// Runs the event loop until `done` holds; the seconds it took, or a large number after `limit`.
double runUntil(const std::function<bool()>& done, double limit = 3.0) {
    auto start = std::chrono::steady_clock::now();
    auto elapsed = [&] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    while (!done()) {
        if (elapsed() > limit)
            return 1e9;
        Fl::wait(0.01);
    }
    return elapsed();
}

// Another program's change: its own stores on the same files, changed and saved.
void elsewhere(const std::function<void(TodoStore&, CategoryStore&)>& change) {
    ScopedStore<TodoStore> todos;
    ScopedStore<CategoryStore> categories;
    change(todos, categories);
    todos.save();
    categories.save();
}

std::string line(int day, const char* category, const char* description) {
    return "1\t1/" + std::to_string(day) + "/2030\t" + category + "\t" + description;
}

const std::string kThree = todoFile({{1, 1, 2030, 0, 0, "Work", "A", ""},
                                     {1, 2, 2030, 0, 0, "Home", "B", ""},
                                     {1, 3, 2030, 0, 0, "Work", "C", ""}});
const std::string kCategories = categoryFile({"Unassigned", "Work", "Home"});

std::string selectedLine(const Fl_Browser* browser) {
    return browser->value() == 0 ? "" : browser->text(browser->value());
}

TEST_F(FollowFiles, ShowsWhatAnotherProgramWroteAndKeepsWhatWasPicked) {
    start(kThree, kCategories);
    switchTab();
    filterBy("Work");
    win->todoBrowser->value(2);     // C
    win->categoryBrowser->value(3); // Home
    win->showCompletedButton->value(1);
    elsewhere([](TodoStore& todos, CategoryStore&) {
        todos.at(0)->setDescription("A2");
        auto* d = new TodoRecord(*todos.at(2)); // C, the last: its next is null
        d->day = 4;
        d->setDescription("D");
        todos.append(d);
    });
    EXPECT_LT(runUntil([&] { return todoLines().size() == 3; }), followBound());
    EXPECT_EQ(todoLines(),
              (Lines{line(1, "Work", "A2"), line(3, "Work", "C"), line(4, "Work", "D")}));
    EXPECT_EQ(selectedLine(win->todoBrowser), line(3, "Work", "C"));
    EXPECT_EQ(win->tabs->value(), win->todoGroup);
    EXPECT_STREQ(win->categoryFilter->text(), "Work");
    EXPECT_EQ(win->showCompletedButton->value(), 1);

    // The filtered category renamed: the filter falls back to "All", as after a start.
    elsewhere(
        [](TodoStore&, CategoryStore& categories) { categories.find("Work")->setName("Job"); });
    EXPECT_LT(runUntil([&] { return lines(win->categoryBrowser)[1] == "Job"; }), followBound());
    EXPECT_STREQ(win->categoryFilter->text(), "All");
    EXPECT_EQ(todoLines().size(), 4u);
    EXPECT_EQ(selectedLine(win->todoBrowser), line(3, "Work", "C"));
    EXPECT_EQ(selectedLine(win->categoryBrowser), "Home");

    // The selected to-do gone: nothing is selected.
    elsewhere([](TodoStore& todos, CategoryStore&) { todos.remove(todos.at(2)); });
    EXPECT_LT(runUntil([&] { return todoLines().size() == 3; }), followBound());
    EXPECT_EQ(win->todoBrowser->value(), 0);
}

// A save of the window's own is seen by the watch and costs a check, not a reload, which would
// set "Today's Date:" again.
TEST_F(FollowFiles, TheWindowsOwnSavesCauseNoReload) {
    start(kThree, kCategories);
    switchTab();
    win->newTodoButton->do_callback();
    entryDialog.descriptionInput->value("mine");
    entryDialog.saveButton->do_callback();
    win->todayOutput->value("marker");
    runUntil([] { return false; }, 0.3);
    EXPECT_STREQ(win->todayOutput->value(), "marker");
    EXPECT_EQ(todoStore.count(), 4);
}

// Edit, or Delete and its question, then another program changes or deletes that to-do: the
// edit is added as a new to-do beside the other version (no copy of the file is kept: the window
// saw that version), the delete leaves that version, and stderr says so in these words; whether the
// window read the files again before Save makes no difference. The to-do is found again by its
// content: another one changed meanwhile changes nothing, and nothing is said.
TEST_F(FollowFiles, AChangeToAToDoChangedElsewhereKeepsThatVersion) {
    const std::string edited = "the to-do \"A\" was changed or deleted by another program while "
                               "it was edited here; both versions are kept\n";
    const std::string stays = "the to-do \"B\" was changed or deleted by another program before "
                              "it could be deleted here; that program's version stays\n";
    const struct {
        const char* name;
        bool edit, readBeforeSave, deleted; // elsewhere: the to-do at `at` deleted, or changed
        int at;
        std::vector<std::string> saved;
        std::string said;
    } rows[] = {
        {"changed", true, false, false, 0, {"A", "B", "C", "A edited"}, edited},
        {"deleted", true, true, true, 0, {"B", "C", "A edited"}, edited},
        {"another changed", true, false, false, 2, {"A edited", "B", "C"}, ""},
        {"delete, another", false, true, false, 0, {"A", "C"}, ""},
        {"delete, same", false, true, false, 1, {"A", "B", "C"}, stays},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        start(kThree, kCategories);
        switchTab();
        win->todoBrowser->value(row.edit ? 1 : 2); // A or B
        auto change = [&](TodoStore& t, CategoryStore&) {
            if (row.deleted)
                t.remove(t.at(row.at));
            else
                t.at(row.at)->day = 9;
        };
        testing::internal::CaptureStderr();
        if (row.edit) {
            win->editTodoButton->do_callback();
            elsewhere(change);
            if (row.readBeforeSave)
                win->followFiles();
            entryDialog.descriptionInput->value("A edited");
            entryDialog.saveButton->do_callback();
        } else {
            whileAsking = [&] {
                elsewhere(change);
                win->followFiles();
            };
            answer({"Yes"});
            win->deleteTodoButton->do_callback();
        }
        std::string said = testing::internal::GetCapturedStderr();
        std::vector<std::string> saved;
        ScopedStore<TodoStore> files;
        for (int i = 0; i < files.count(); i++)
            saved.emplace_back(files.at(i)->description);
        EXPECT_EQ(saved, row.saved);
        EXPECT_EQ(said, row.said);
        for (const auto& entry : std::filesystem::directory_iterator("."))
            EXPECT_EQ(entry.path().string().find("changed-elsewhere"), std::string::npos);
    }
}

// Category changes apply to the categories found then: a rename of a category renamed
// elsewhere adds the new name beside the other; a tab switch reassigns by the categories there.
TEST_F(FollowFiles, CategoryChangesApplyToTheCategoriesFoundThen) {
    start(kThree, kCategories);
    win->categoryBrowser->value(3);
    win->editCategoryButton->do_callback();
    elsewhere([](TodoStore&, CategoryStore& c) { c.find("Home")->setName("Casa"); });
    categoryDialog.nameInput->value("House");
    testing::internal::CaptureStderr();
    categoryDialog.saveButton->do_callback();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("the new name is added"),
              std::string::npos);
    EXPECT_TRUE(readFile("cat.db") == categoryFile({"Unassigned", "Work", "Casa", "House"}));
    EXPECT_EQ(lines(win->categoryBrowser), (Lines{"Unassigned", "Work", "Casa", "House"}));

    elsewhere([](TodoStore&, CategoryStore& c) { c.remove(c.find("Work")); });
    switchTab();
    EXPECT_TRUE(readFile("pindle_todo.db") ==
                todoFile({{1, 1, 2030, 0, 0, "Unassigned", "A", ""},
                          {1, 2, 2030, 0, 0, "Unassigned", "B", ""},
                          {1, 3, 2030, 0, 0, "Unassigned", "C", ""}}));
}

} // namespace
