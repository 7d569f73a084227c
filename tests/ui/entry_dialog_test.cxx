// The to-do entry dialog driven through the main window: New, Edit, Save, Cancel, the date
// buttons, and the limits of the text fields.
#include "cal_date.h"
#include "support/store_helpers.h"
#include "support/ui_fixture.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Output.H>
#include <FL/Fl_Value_Input.H>

#include <cstdlib>

namespace {

using Lines = std::vector<std::string>;
using EntryDialogTest = UiTest;

void setShownDate(int month, int day, int year) {
    entryDialog.monthInput->value(month);
    entryDialog.dayInput->value(day);
    entryDialog.yearInput->value(year);
    entryDialog.updateWeekday();
}

// Sends text to a field as the keyboard or a paste would deliver it.
void deliver(Fl_Input* input, int event, const std::string& text) {
    Fl::e_text = const_cast<char*>(text.c_str());
    Fl::e_length = static_cast<int>(text.size());
    Fl::e_keysym = 'a';
    Fl::e_state = 0;
    input->take_focus();
    input->handle(event);
}

TEST_F(EntryDialogTest, NewThenSaveAppendsTodayInFirstCategory) {
    std::string cats = categoryBytes("Home") + categoryBytes("Unassigned");
    start(nullptr, &cats);
    entryDialog.descriptionInput->value("old text");
    win->newTodoButton->do_callback();
    EXPECT_TRUE(entryDialog.window->shown());
    EXPECT_EQ(entryDialog.editing(), 0);
    int m = 0, d = 0, y = 0;
    CalDate::today(m, d, y);
    EXPECT_EQ(shownEntryDate(),
              todayText() + " " + CalDate::weekdayName(CalDate::weekday(m, d, y)));
    EXPECT_STREQ(entryDialog.descriptionInput->value(), "");
    EXPECT_STREQ(entryDialog.categoryChoice->text(), "Home");
    EXPECT_EQ(entryDialog.priorityChoice->value(), 0);

    entryDialog.descriptionInput->value("Buy milk");
    entryDialog.priorityChoice->value(4);
    entryDialog.completeButton->value(1);
    entryDialog.notesBuffer.text("two\nlines");
    entryDialog.saveButton->do_callback();
    EXPECT_FALSE(entryDialog.window->shown());

    TodoFields expected;
    expected.month = m, expected.day = d, expected.year = y, expected.priority = 4;
    expected.completed = 1, expected.category = "Home", expected.description = "Buy milk";
    expected.notes = "two\nlines";
    EXPECT_TRUE(readFile("pindle_todo.db") == todoBytes(expected));
    EXPECT_TRUE(win->todoBrowser->size() == 0); // completed, and "&Show Completed" is off
}

TEST_F(EntryDialogTest, EditLoadsTheSelectedRecordAndSaveWritesInPlace) {
    TodoFields a, b;
    a.month = 2, a.day = 29, a.year = 2004, a.priority = 3, a.description = "first";
    a.category = "Work", a.notes = "old notes";
    b.month = 1, b.day = 1, b.year = 2003, b.description = "second", b.category = "Vanished";
    std::string todoFile = todoBytes(a) + todoBytes(b);
    std::string cats = categoryBytes("Unassigned") + categoryBytes("Work");
    start(&todoFile, &cats);

    win->editTodoButton->do_callback(); // nothing selected: nothing happens
    EXPECT_FALSE(entryDialog.window->shown());

    selectLine(win->todoBrowser, 2); // sorted: "second" (2003) comes first
    win->editTodoButton->do_callback();
    ASSERT_TRUE(entryDialog.window->shown());
    EXPECT_EQ(entryDialog.editing(), 1);
    EXPECT_EQ(shownEntryDate(), "2/29/2004 Sunday");
    EXPECT_EQ(entryDialog.priorityChoice->value(), 3);
    EXPECT_STREQ(entryDialog.categoryChoice->text(), "Work");
    EXPECT_STREQ(entryDialog.descriptionInput->value(), "first");
    char* notes = entryDialog.notesBuffer.text();
    EXPECT_STREQ(notes, "old notes");
    std::free(notes);

    entryDialog.descriptionInput->value("changed");
    entryDialog.saveButton->do_callback();
    std::string saved = readFile("pindle_todo.db");
    a.description = "changed";
    EXPECT_TRUE(saved.substr(0, 32120) == todoBytes(a).substr(0, 32120));
    EXPECT_TRUE(saved.substr(32124) == todoBytes(b));

    // A category that matches no entry opens with the first entry, which Save then stores.
    selectLine(win->todoBrowser, 1);
    win->editTodoButton->do_callback();
    EXPECT_STREQ(entryDialog.categoryChoice->text(), "Unassigned");
    entryDialog.saveButton->do_callback();
    EXPECT_EQ(readFile("pindle_todo.db").substr(32124 + 17, 11), std::string("Unassigned\0", 11));
}

TEST_F(EntryDialogTest, SaveInEditModeWithoutSelectionStillSavesAndRebuilds) {
    TodoFields a;
    a.description = "only";
    std::string todoFile = todoBytes(a) + "tail";
    start(&todoFile, nullptr);
    entryDialog.setEditing(1);
    entryDialog.show();
    entryDialog.saveButton->do_callback();
    EXPECT_FALSE(entryDialog.window->shown());
    EXPECT_TRUE(readFile("pindle_todo.db") == todoBytes(a));
}

TEST_F(EntryDialogTest, CancelHidesAndSavesNothing) {
    start();
    win->newTodoButton->do_callback();
    entryDialog.descriptionInput->value("typed");
    entryDialog.cancelButton->do_callback();
    EXPECT_FALSE(entryDialog.window->shown());
    EXPECT_FALSE(exists("pindle_todo.db"));
    EXPECT_STREQ(entryDialog.descriptionInput->value(), "typed");
}

TEST_F(EntryDialogTest, DateButtons) {
    start();
    win->newTodoButton->do_callback();
    struct Step {
        CalDate from;
        Fl_Button* button;
        const char* expected;
    } steps[] = {
        {{2, 28, 2005}, entryDialog.dayPlusButton, "3/1/2005 Tuesday"},
        {{3, 1, 2005}, entryDialog.dayMinusButton, "2/28/2005 Monday"},
        {{12, 31, 2005}, entryDialog.dayPlusButton, "1/1/2006 Sunday"},
        {{1, 31, 2005}, entryDialog.monthPlusButton, "2/28/2005 Monday"},
        {{2, 28, 2005}, entryDialog.monthPlusButton, "3/28/2005 Monday"},
        {{1, 15, 2005}, entryDialog.monthMinusButton, "12/15/2004 Wednesday"},
        {{3, 31, 2005}, entryDialog.monthMinusButton, "2/28/2005 Monday"},
        // Year + and Year - leave the weekday of the previous date showing.
        {{2, 29, 2004}, entryDialog.yearPlusButton, "2/28/2005 Sunday"},
        {{2, 29, 2004}, entryDialog.yearMinusButton, "2/28/2003 Sunday"},
        {{6, 1, 3000}, entryDialog.yearPlusButton, "6/1/3001 Sunday"},
        {{6, 1, 1980}, entryDialog.yearMinusButton, "6/1/1979 Sunday"},
    };
    for (const auto& s : steps) {
        setShownDate(s.from.month, s.from.day, s.from.year);
        s.button->do_callback();
        EXPECT_EQ(shownEntryDate(), s.expected) << s.button->label();
    }

    CalDate now{};
    CalDate::today(now.month, now.day, now.year);
    struct FromToday {
        Fl_Button* button;
        int days;
    } relative[] = {{entryDialog.tomorrowButton, 1},
                    {entryDialog.nextWeekButton, 7},
                    {entryDialog.todayButton, 0}};
    for (const auto& r : relative) {
        setShownDate(1, 1, 1999);
        r.button->do_callback();
        CalDate e = CalDate::addDays(now, r.days);
        char buf[256];
        CalDate::format(e.month, e.day, e.year, buf);
        EXPECT_EQ(shownEntryDate(),
                  std::string(buf) + " " +
                      CalDate::weekdayName(CalDate::weekday(e.month, e.day, e.year)))
            << r.button->label();
    }
    EXPECT_EQ(entryDialog.window->resizable(), entryDialog.tomorrowButton);
    EXPECT_FALSE(entryDialog.monthInput->active());
    EXPECT_FALSE(entryDialog.weekdayOutput->active());
}

TEST_F(EntryDialogTest, NotesAreCutAndAFullDescriptionRunsOnIntoThem) {
    std::string cats = categoryBytes("Unassigned");
    start(nullptr, &cats);
    win->newTodoButton->do_callback();
    std::string fifty(50, 'D');
    entryDialog.descriptionInput->value(fifty.c_str());
    entryDialog.notesBuffer.text(std::string(40000, 'n').c_str());
    entryDialog.saveButton->do_callback();
    std::string saved = readFile("pindle_todo.db");
    ASSERT_EQ(saved.size(), 32124u);
    EXPECT_EQ(saved.substr(67, 50), fifty); // no terminator inside the description
    EXPECT_EQ(saved.substr(117, 32000), std::string(31999, 'n') + '\0');

    win->showCompletedButton->do_callback();
    ASSERT_EQ(win->todoBrowser->size(), 1);
    std::string line = win->todoBrowser->text(1);
    EXPECT_EQ(line.size(), 255u); // the run-on text is cut at the line buffer
    EXPECT_EQ(line.substr(line.rfind('\t') + 1, 52), fifty + "nn");
}

TEST_F(EntryDialogTest, EmptyCategoryStoreGivesEmptyChoiceAndEmptyCategory) {
    std::string noCategories;
    start(nullptr, &noCategories);
    win->newTodoButton->do_callback();
    EXPECT_EQ(entryDialog.categoryChoice->value(), -1);
    EXPECT_EQ(entryDialog.categoryChoice->text(), nullptr);
    entryDialog.saveButton->do_callback();
    EXPECT_EQ(readFile("pindle_todo.db").substr(16, 2), std::string("\0\0", 2));
}

TEST_F(EntryDialogTest, DescriptionRefusesBytesBeyondFiftyTypedOrPasted) {
    start();
    win->newTodoButton->do_callback();
    Fl_Input* input = entryDialog.descriptionInput;
    input->value(std::string(49, 'a').c_str());
    input->position(49);
    deliver(input, FL_KEYBOARD, "\xc3\xa9"); // "é" needs two bytes, one is left
    EXPECT_EQ(input->size(), 49);
    deliver(input, FL_KEYBOARD, "b");
    EXPECT_EQ(input->size(), 50);
    deliver(input, FL_KEYBOARD, "c");
    EXPECT_EQ(std::string(input->value()), std::string(49, 'a') + "b");

    struct Paste {
        std::string before, pasted, expected;
    } pastes[] = {
        {"", std::string(60, 'p'), std::string(50, 'p')},
        {std::string(45, 'x'), "\xc3\xa9\xc3\xa9\xc3\xa9",
         std::string(45, 'x') + "\xc3\xa9\xc3\xa9"},
        {"", std::string(30, 'q') + "  \n", std::string(30, 'q')},
    };
    for (const auto& p : pastes) {
        input->value(p.before.c_str());
        input->position(input->size());
        deliver(input, FL_PASTE, p.pasted);
        EXPECT_EQ(std::string(input->value()), p.expected) << p.pasted;
    }

    std::string accents;
    for (int i = 0; i < 25; i++)
        accents += "\xc3\xa9";
    input->value(accents.c_str());
    entryDialog.saveButton->do_callback();
    EXPECT_EQ(readFile("pindle_todo.db").substr(67, 51), accents + '\0');
}

} // namespace
