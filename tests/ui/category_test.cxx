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
