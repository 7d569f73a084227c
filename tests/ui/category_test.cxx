// The category tab and its dialog, and the About box.
#include "support/store_helpers.h"
#include "support/ui_fixture.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Output.H>

namespace {

using Lines = std::vector<std::string>;
using CategoryTab = UiTest;

void typeAndSave(const char* name) {
    categoryDialog.nameInput->value(name);
    categoryDialog.saveButton->do_callback();
}

// Any name is saved as typed, empty and duplicate ones too; Edit renames in place.
TEST_F(CategoryTab, NewAppendsAnyNameAndEditRenamesInPlace) {
    start();
    for (const char* name : {"Work", "", "Work"}) {
        win->newCategoryButton->do_callback();
        EXPECT_TRUE(categoryDialog.window->shown());
        EXPECT_STREQ(categoryDialog.nameInput->value(), "");
        typeAndSave(name);
    }
    win->editCategoryButton->do_callback(); // nothing selected
    EXPECT_FALSE(categoryDialog.window->shown());
    win->categoryBrowser->value(1);
    win->editCategoryButton->do_callback();
    EXPECT_STREQ(categoryDialog.nameInput->value(), "Unassigned");
    typeAndSave("Inbox");
    EXPECT_FALSE(categoryDialog.window->shown());
    EXPECT_EQ(win->categoryBrowser->value(), 0);
    EXPECT_EQ(lines(win->categoryBrowser), (Lines{"Inbox", "Work", "", "Work"}));
    EXPECT_TRUE(readFile("cat.db") == categoryFile({"Inbox", "Work", "", "Work"}));
    // A second click on the selected name edits it, as Edit does; the list finds lines once drawn.
    Fl::flush();
    Fl::e_x = win->categoryBrowser->x() + 20;
    Fl::e_y = win->categoryBrowser->y() + 8;
    for (int event : {FL_PUSH, FL_RELEASE, FL_PUSH, FL_RELEASE})
        win->categoryBrowser->handle(event);
    EXPECT_TRUE(categoryDialog.window->shown());
}

// The question comes first, then the refusal of "Unassigned"; a duplicate goes by its line.
TEST_F(CategoryTab, DeleteAsksThenRefusesUnassignedAndRemovesTheSelectedLine) {
    start({}, categoryFile({"Unassigned", "Work", "Work"}));
    win->deleteCategoryButton->do_callback();
    win->categoryBrowser->value(1);
    answer({"Yes", "Close", "No", "Yes"});
    win->deleteCategoryButton->do_callback();
    EXPECT_EQ(categoryStore.count(), 3);
    CategoryRecord* first = categoryStore.at(1);
    win->categoryBrowser->value(3);
    win->deleteCategoryButton->do_callback();
    EXPECT_EQ(categoryStore.count(), 3);
    win->deleteCategoryButton->do_callback();
    EXPECT_EQ(boxes, (Lines{"Do you really want to delete the category Item?",
                            "You can not delete the Unassigned category!",
                            "Do you really want to delete the category Item?",
                            "Do you really want to delete the category Item?"}));
    EXPECT_EQ(categoryStore.at(1), first);
    EXPECT_TRUE(readFile("cat.db") == categoryFile({"Unassigned", "Work"}));
}

TEST_F(CategoryTab, ADeletedCategoryReachesTheToDosOnlyAtTheNextTabSwitch) {
    TodoFields task{1, 1, 2005, 0, 0, "Work", "task", ""};
    start(todoFile({task}), categoryFile({"Unassigned", "Work"}));
    win->categoryBrowser->value(2);
    answer({"Yes"});
    win->deleteCategoryButton->do_callback();
    EXPECT_TRUE(readFile("pindle_todo.db") == todoFile({task}));
    switchTab();
    task.category = "Unassigned";
    EXPECT_TRUE(readFile("pindle_todo.db") == todoFile({task}));
}

TEST_F(CategoryTab, AboutShowsTheVersionAndOkCloses) {
    start();
    win->aboutButton->do_callback();
    EXPECT_TRUE(aboutDialog.window->shown());
    EXPECT_EQ(std::string(aboutDialog.aboutText->value()).rfind("Pindle ToDo Version 1.5\n", 0),
              0u);
    aboutDialog.okButton->do_callback();
    EXPECT_FALSE(aboutDialog.window->shown());
}

} // namespace
