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

TEST_F(CategoryTab, NewSavesAnyNameAndEditRenamesInPlace) {
    start();
    win->newCategoryButton->do_callback();
    EXPECT_TRUE(categoryDialog.window->shown());
    categoryDialog.nameInput->value("Work");
    categoryDialog.saveButton->do_callback();
    EXPECT_FALSE(categoryDialog.window->shown());
    win->newCategoryButton->do_callback();
    EXPECT_STREQ(categoryDialog.nameInput->value(), "");
    categoryDialog.saveButton->do_callback(); // an empty name is accepted
    win->newCategoryButton->do_callback();
    categoryDialog.nameInput->value("Work");
    categoryDialog.saveButton->do_callback(); // and so is a duplicate
    EXPECT_EQ(lines(win->categoryBrowser), (Lines{"Unassigned", "Work", "", "Work"}));
    EXPECT_TRUE(readFile("cat.db") == categoryBytes("Unassigned", 1) + categoryBytes("Work", 1) +
                                          categoryBytes("", 1) + categoryBytes("Work"));

    win->editCategoryButton->do_callback(); // nothing selected
    EXPECT_FALSE(categoryDialog.window->shown());
    selectLine(win->categoryBrowser, 1);
    win->editCategoryButton->do_callback();
    EXPECT_STREQ(categoryDialog.nameInput->value(), "Unassigned");
    categoryDialog.nameInput->value("Inbox");
    categoryDialog.saveButton->do_callback();
    EXPECT_EQ(lines(win->categoryBrowser), (Lines{"Inbox", "Work", "", "Work"}));
    EXPECT_EQ(win->categoryBrowser->value(), 0);
    EXPECT_EQ(readFile("cat.db").substr(0, 6), std::string("Inbox\0", 6));

    win->newCategoryButton->do_callback();
    categoryDialog.nameInput->value("dropped");
    categoryDialog.cancelButton->do_callback();
    EXPECT_EQ(categoryStore.count(), 4);
}

TEST_F(CategoryTab, DeleteAsksFirstThenRefusesUnassigned) {
    std::string cats = categoryBytes("Unassigned") + categoryBytes("Work") + categoryBytes("Work");
    start(nullptr, &cats);
    win->deleteCategoryButton->do_callback();
    EXPECT_TRUE(boxes.empty());

    selectLine(win->categoryBrowser, 1);
    answer({"Yes", "Close"});
    win->deleteCategoryButton->do_callback();
    EXPECT_EQ(boxes, (Lines{"Do you really want to delete the category Item?",
                            "You can not delete the Unassigned category!"}));
    EXPECT_EQ(categoryStore.count(), 3);
    EXPECT_FALSE(exists("cat.db") && readFile("cat.db").size() != 3 * 56u);

    CategoryRecord* second = categoryStore.at(2);
    selectLine(win->categoryBrowser, 3);
    answer({"No"});
    win->deleteCategoryButton->do_callback();
    EXPECT_EQ(categoryStore.count(), 3);
    answer({"Yes"});
    win->deleteCategoryButton->do_callback();
    EXPECT_EQ(categoryStore.count(), 2);
    EXPECT_NE(categoryStore.at(1), second); // the selected duplicate went, not the first
    EXPECT_TRUE(readFile("cat.db") == categoryBytes("Unassigned", 1) + categoryBytes("Work"));
}

TEST_F(CategoryTab, DeletedCategoryReachesTodosOnlyAtTheNextTabSwitch) {
    TodoFields t;
    t.category = "Work", t.description = "task";
    std::string todoFile = todoBytes(t);
    std::string cats = categoryBytes("Unassigned") + categoryBytes("Work");
    start(&todoFile, &cats);
    selectLine(win->categoryBrowser, 2);
    answer({"Yes"});
    win->deleteCategoryButton->do_callback();
    EXPECT_TRUE(readFile("pindle_todo.db") == todoFile);
    switchTab();
    EXPECT_EQ(readFile("pindle_todo.db").substr(17, 11), std::string("Unassigned\0", 11));
}

TEST_F(CategoryTab, NameInputKeepsToFiftyBytes) {
    start();
    win->newCategoryButton->do_callback();
    Fl_Input* input = categoryDialog.nameInput;
    std::string pasted;
    for (int i = 0; i < 30; i++)
        pasted += "\xc3\xa9";
    Fl::e_text = const_cast<char*>(pasted.c_str());
    Fl::e_length = static_cast<int>(pasted.size());
    input->take_focus();
    input->handle(FL_PASTE);
    EXPECT_EQ(input->size(), 50);
    categoryDialog.saveButton->do_callback();
    EXPECT_EQ(readFile("cat.db").substr(56, 51), pasted.substr(0, 50) + '\0');
}

TEST_F(CategoryTab, AboutShowsVersionAndCloses) {
    start();
    win->aboutButton->do_callback();
    EXPECT_TRUE(aboutDialog.window->shown());
    std::string text = aboutDialog.aboutText->value();
    EXPECT_EQ(text.rfind("Pindle ToDo Version 1.5\nReleased 3/25/2005\n", 0), 0u);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4);
    EXPECT_NE(text.back(), '\n');
    win->aboutButton->do_callback(); // already shown: only raised
    EXPECT_TRUE(aboutDialog.window->shown());
    aboutDialog.okButton->do_callback();
    EXPECT_FALSE(aboutDialog.window->shown());
    EXPECT_STREQ(aboutDialog.window->label(), "About Pindle ToDo");
}

} // namespace
