// Data files no dialog would write, through the real window: strings without terminators, and
// browser format codes in names and descriptions.
#include "support/store_helpers.h"
#include "support/ui_fixture.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Tabs.H>

namespace {

using Lines = std::vector<std::string>;
using DamagedFiles = UiTest;

const std::string kCategories = categoryFile({"Unassigned", "Work"});

// Far in the future, so an undamaged date gives a plain line whatever today is.
TodoFields future(const std::string& description, const std::string& category = "Work") {
    return {6, 15, 2999, 0, 0, category, description, ""};
}

// The three strings end only at the notes' last byte, which loading makes a terminator: the
// description field then shows everything up to there, and Save cuts it back into its record.
TEST_F(DamagedFiles, UnterminatedStringsEditAndSaveWithinTheRecord) {
    TodoFields f = future(std::string(50, 'd'), std::string(50, 'c'));
    f.notes = std::string(32000, 'n');
    start(todoFile({f}), kCategories);
    switchTab();
    win->todoBrowser->value(1);
    win->editTodoButton->do_callback();
    EXPECT_EQ(std::string(entryDialog.descriptionInput->value()),
              std::string(50, 'd') + std::string(31999, 'n'));
    entryDialog.saveButton->do_callback();
    Fl::flush(); // drawn now, under the sanitizers too
    f.category = "Unassigned";
    f.notes.pop_back();
    EXPECT_TRUE(readFile("pindle_todo.db") == todoFile({f}));
}

// Codes are read where the browser reads them: at the start of a category name, and at the
// start of each of the to-do list's five columns. Only those that would crash the toolkit or
// end the program are shown as typed instead: fonts outside 0-15 and sizes above 2000, as the
// codes leave them. Every line here is drawn.
TEST_F(DamagedFiles, FormatCodesAreObeyedUnlessTheyBreakTheToolkit) {
    Lines names = {"@F15@S2000@S0@S-9x", "@F16x",     "@F-1x",       "@S2001x",
                   "@S99999999999x",     "@F14@b@ix", "@F12@b@F16x", "@F99@F1x",
                   "@S99999@lx",         "@B5@F16x",  "a\t@F16x",    "@@F16x"};
    start(todoFile({future("x\t@S99999y", "@F99999x"),
                    future("a\tb\t@F99"),
                    {6, 15, 2004, 0, 0, "a\t@F16", "r", ""}}),
          categoryFile(names));
    Fl::flush(); // drawn now, under the sanitizers too
    EXPECT_EQ(lines(win->categoryBrowser),
              (Lines{"@F15@S2000@S0@S-9x", "@.@F16x", "@.@F-1x", "@.@S2001x", "@.@S99999999999x",
                     "@F14@b@ix", "@.@F12@b@F16x", "@F99@F1x", "@S99999@lx", "@.@B5@F16x",
                     "a\t@F16x", "@@F16x"}));
    win->tabs->value(win->todoGroup); // no tab switch: the categories stay as they are
    Fl::flush();                      // drawn now, under the sanitizers too
    EXPECT_EQ(todoLines(),
              (Lines{"@C1@.1\t@C1@.6/15/2004\t@C1@.a\t@.@F16\t@C1@.r",
                     "1\t6/15/2999\tWork\ta\tb\t@F99", "1\t6/15/2999\t@.@F99999x\tx\t@.@S99999y"}));
}

} // namespace
