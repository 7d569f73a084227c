// The to-do entry dialog driven through the main window: New, Edit, Save and Cancel, the date
// buttons, and the limits of the description and the notes; the letters of every window.
#include "support/ui_fixture.h"
#include "text_cursor.h"

namespace {

using EntryDialogTest = UiTest;
using Keyboard = UiTest;

// The date fields and the weekday, as "2/28/2005 Monday".
std::string shownEntryDate() {
    return dateText(entryDialog.shownDate()) + " " + entryDialog.weekdayOutput->value();
}

std::string notes() {
    char* text = entryDialog.notesBuffer.text();
    std::string copy = text;
    std::free(text);
    return copy;
}

// Edit loads the selected line's to-do and Save writes it back in place; a category the
// choice does not hold as one entry ("a|b" is split by the menu) opens on the first entry,
// which Save then stores. Without a selection Edit does nothing and Save changes nothing.
TEST_F(EntryDialogTest, EditLoadsTheSelectedToDoAndSaveWritesItInPlace) {
    TodoFields a{2, 29, 2004, 3, 0, "Work", "first", "old notes"};
    TodoFields b{1, 1, 2003, 0, 0, "a|b", "second", ""};
    start(todoFile({a, b}), categoryFile({"Unassigned", "Work", "a|b"}));
    win->editTodoButton->do_callback();
    EXPECT_FALSE(entryDialog.window->shown());
    win->todoBrowser->value(2); // sorted: "second" (2003) comes first
    win->editTodoButton->do_callback();
    EXPECT_EQ(shownEntryDate(), "2/29/2004 Sunday");
    EXPECT_EQ(entryDialog.priorityChoice->value(), 3);
    EXPECT_STREQ(entryDialog.categoryChoice->text(), "Work");
    EXPECT_STREQ(entryDialog.descriptionInput->value(), "first");
    EXPECT_EQ(notes(), "old notes");
    entryDialog.descriptionInput->value("changed");
    entryDialog.saveButton->do_callback();
    a.description = "changed";
    EXPECT_TRUE(readFile("pindle_todo.db") == todoFile({a, b}));

    win->todoBrowser->value(1);
    win->editTodoButton->do_callback();
    EXPECT_STREQ(entryDialog.categoryChoice->text(), "Unassigned");
    EXPECT_EQ(shownEntryDate(), "1/1/2003 Wednesday");
    entryDialog.saveButton->do_callback();
    b.category = "Unassigned";
    EXPECT_TRUE(readFile("pindle_todo.db") == todoFile({a, b}));

    entryDialog.setEditing(1); // as if Edit had run, but nothing is selected
    entryDialog.descriptionInput->value("lost");
    entryDialog.saveButton->do_callback();
    EXPECT_TRUE(readFile("pindle_todo.db") == todoFile({a, b}));
}

// Each button on the date shown; Year + and Year - leave the weekday as it was. Months a
// damaged file holds count on from the year's ends, and month 0 has no days.
TEST_F(EntryDialogTest, DateButtons) {
    start();
    win->newTodoButton->do_callback();
    struct Step {
        CalDate from;
        Fl_Button* button;
        const char* shown;
    } steps[] = {
        {{1, 31, 2005}, entryDialog.monthPlusButton, "2/28/2005 Monday"},
        {{3, 31, 2004}, entryDialog.monthMinusButton, "2/29/2004 Sunday"},
        {{2, 29, 2004}, entryDialog.yearPlusButton, "2/28/2005 Sunday"},
        {{6, 1, 1980}, entryDialog.yearMinusButton, "6/1/1979 Sunday"},
        {{13, 15, 2004}, entryDialog.dayPlusButton, "1/16/2005 Sunday"},
        {{13, 15, 2004}, entryDialog.monthPlusButton, "2/15/2005 Tuesday"},
        {{0, 15, 2004}, entryDialog.yearPlusButton, "0/0/2005 Monday"},
        {{-1, 15, 2004}, entryDialog.monthPlusButton, "0/0/2004 Sunday"},
        {{-1, 15, 2004}, entryDialog.monthMinusButton, "10/15/2003 Wednesday"},
    };
    for (const auto& s : steps) {
        entryDialog.showDate(s.from);
        entryDialog.updateWeekday();
        s.button->do_callback();
        EXPECT_EQ(shownEntryDate(), s.shown) << s.button->label() << " " << s.from.month;
    }
}

// The notes take keys as the toolkit's editor does, and pastes by the length they come with
// (nothing after it is read): at most 31,999 bytes of each, and none into 200,000 bytes. They
// keep 31,999 bytes, cut between characters; a description of 50 has no terminator of its own
// and runs on into them, in the record and on the list's line, which stops at 255 characters.
TEST_F(EntryDialogTest, NotesAreCutAndAFullDescriptionRunsOnIntoThem) {
    start({}, categoryFile({}));
    win->newTodoButton->do_callback();
    EXPECT_EQ(entryDialog.categoryChoice->text(), nullptr); // no category to choose
    Fl::focus(entryDialog.notesEditor);
    press(entryDialog.window, 'a', "a");
    std::vector<char> pasted(40000, 'p'); // no terminator
    Fl::e_text = pasted.data();
    Fl::e_length = static_cast<int>(pasted.size());
    entryDialog.notesEditor->handle(FL_PASTE);
    EXPECT_EQ(notes(), "a" + std::string(31999, 'p'));
    entryDialog.notesBuffer.text(std::string(200000, 'n').c_str());
    entryDialog.notesEditor->handle(FL_PASTE);
    EXPECT_EQ(entryDialog.notesBuffer.length(), 200000);
    entryDialog.descriptionInput->value(std::string(50, 'D').c_str());
    entryDialog.notesBuffer.text(std::string(40000, 'n').c_str());
    entryDialog.saveButton->do_callback();
    std::string saved = readFile("pindle_todo.db");
    CalDate t = fromToday(0);
    EXPECT_TRUE(saved == todoBytes({t.month, t.day, t.year, 0, 0, "", std::string(50, 'D'),
                                    std::string(31999, 'n')}));
    std::string line = win->todoBrowser->text(1);
    EXPECT_EQ(line.size(), 255u);
    EXPECT_EQ(line.substr(line.rfind('\t') + 1, 52), std::string(50, 'D') + "nn");
    // Never inside a character: of 20,000 two-byte ones, 15,999 fit.
    std::string twoByte;
    for (int i = 0; i < 20000; i++)
        twoByte += "\xC3\xA9";
    win->newTodoButton->do_callback();
    entryDialog.notesBuffer.text(twoByte.c_str());
    entryDialog.saveButton->do_callback();
    EXPECT_EQ(todoStore.at(1)->notes(), twoByte.substr(0, 31998));
}

// Real key presses and pastes at and over the limit of 50 bytes: growth past it is refused,
// while deleting, moving and selecting work whatever the length.
TEST_F(EntryDialogTest, LimitedFieldsRefuseOnlyGrowthPastFiftyBytes) {
    start();
    // After each key: the length against the start's, and the cursor (-1: at the end).
    const std::tuple<int, const char*, int, int, int> keys[] = {{'b', "b", 0, 0, -1},
                                                                {0xe9, "\xc3\xa9", 0, 0, -1},
                                                                {FL_BackSpace, "\b", 0, -1, -1},
                                                                {FL_Home, "", 0, -1, 0},
                                                                {FL_Delete, "\x7f", 0, -2, 0},
                                                                {FL_Right, "", 0, -2, 1},
                                                                {'a', "\x01", FL_CTRL, -2, 0}};
    const std::pair<Fl_Window*, Fl_Input*> fields[] = {
        {entryDialog.window, entryDialog.descriptionInput},
        {categoryDialog.window, categoryDialog.nameInput}};
    for (auto [window, input] : fields) {
        for (int length : {50, 32049}) {
            input->value(std::string(static_cast<std::size_t>(length), 'd').c_str());
            window->show();
            Fl::focus(input);
            TextCursor::place(*input, length, length);
            for (auto [key, text, state, change, cursor] : keys) {
                press(window, key, text, state);
                EXPECT_EQ(input->size(), length + change) << length << " " << key;
                EXPECT_EQ(TextCursor::at(*input), cursor < 0 ? input->size() : cursor) << key;
            }
            press(window, 'x', "x"); // typed over the whole selection
            press(window, 'y', "y");
            EXPECT_STREQ(input->value(), "xy");
            window->hide();
        }
    }
    // Pastes keep what fits, never half a character, and never grow a text already too long.
    win->newTodoButton->do_callback();
    Fl_Input* input = entryDialog.descriptionInput;
    struct Paste {
        std::string before, pasted, after;
        int selectFrom; // the selection runs from here to the end; -1: none
    } pastes[] = {
        {"", std::string(60, 'p'), std::string(50, 'p'), -1},
        {std::string(45, 'x'), "\xc3\xa9\xc3\xa9\xc3\xa9",
         std::string(45, 'x') + "\xc3\xa9\xc3\xa9", -1},
        {"", std::string(30, 'q') + "  \n", std::string(30, 'q'), -1},
        {"ab", "c", "abc", -1},
        {std::string(50, 'f'), "more", std::string(50, 'f'), -1},
        {std::string(60, 'o'), "abcdef", std::string(48, 'o') + "ab", 48},
    };
    for (const auto& p : pastes) {
        input->value(p.before.c_str());
        TextCursor::place(*input, input->size(), p.selectFrom < 0 ? input->size() : p.selectFrom);
        Fl::e_text = const_cast<char*>(p.pasted.data());
        Fl::e_length = static_cast<int>(p.pasted.size());
        input->handle(FL_PASTE);
        EXPECT_EQ(std::string(input->value()), p.after) << p.pasted;
    }
}

// Each button's letter acts on the window shown: plain where the focus takes no text (a list, a
// button), with Alt from the text fields, whose plain letters are text; Escape closes a dialog
// unsaved. A dialog shown holds the main window still. A click selects a line, a second one
// edits it, as Edit does. The About box holds the window until Ok. New starts afresh, whatever
// an earlier Edit left: a category gets any name typed, empty or not; a to-do today's date and
// weekday, priority "1", not completed, no texts and the first category.
TEST_F(Keyboard, LettersDriveEveryWindowAndNewStartsAfresh) {
    CalDate t = fromToday(0), tomorrow = fromToday(1), in2 = fromToday(2), week = fromToday(8);
    TodoFields alpha{1, 1, 2030, 0, 0, "Work", "alpha", ""};
    TodoFields old{tomorrow.month, tomorrow.day, tomorrow.year, 4, 1, "Work2", "old", "notes"};
    start(todoFile({alpha, old}), categoryFile({"Unassigned", "Work"}));
    auto keys = [&](Fl_Widget* focus, const std::string& typed, int state = 0) {
        for (char k : typed) {
            Fl::focus(focus);
            press(focus->top_window(), k == '\e' ? FL_Escape : k, std::string(1, k), state);
        }
    };
    auto clickTwice = [](Fl_Browser* browser, Fl_Window* dialog) {
        Fl::flush(); // the list finds lines once drawn
        Fl::e_x = browser->x() + 20;
        Fl::e_y = browser->y() + 8;
        for (int click = 0; click < 2; click++) {
            EXPECT_FALSE(dialog->shown()) << "after click " << click;
            browser->handle(FL_PUSH);
            browser->handle(FL_RELEASE);
        }
        EXPECT_TRUE(dialog->shown());
    };
    Fl_Input* name = categoryDialog.nameInput;
    keys(win->categoryBrowser, "e"); // nothing selected
    EXPECT_EQ(Fl::modal(), nullptr);
    win->categoryBrowser->value(2);
    keys(win->categoryBrowser, "a");
    EXPECT_EQ(Fl::modal(), aboutDialog.window);
    aboutDialog.okButton->do_callback(); // or the next letters would go to it
    keys(win->categoryBrowser, "e");
    EXPECT_EQ(Fl::modal(), categoryDialog.window);
    keys(name, "2");
    keys(name, "s", FL_ALT);
    EXPECT_EQ(win->categoryBrowser->value(), 0);
    const std::tuple<Fl_Widget*, char, int, std::string> ends[] = {
        {name, 'c', FL_ALT, "x"},
        {categoryDialog.saveButton, 's', 0, ""},
        {name, 's', FL_ALT, "Work2"},
        {name, '\e', 0, "x"}};
    for (auto [focus, k, state, typed] : ends) {
        keys(win->categoryBrowser, "n");
        keys(name, typed);
        keys(focus, std::string(1, k), state);
    }
    EXPECT_TRUE(readFile("cat.db") == categoryFile({"Unassigned", "Work2", "", "Work2"}));
    clickTwice(win->categoryBrowser, categoryDialog.window);
    EXPECT_EQ(categoryDialog.editing(), 1);
    categoryDialog.window->hide();

    switchTab();
    answer({"1"});
    keys(win->todoBrowser, "t");
    EXPECT_STREQ(win->categoryFilter->text(), "Unassigned");
    filterBy("All");
    keys(win->todoBrowser, "s");
    win->todoBrowser->value(1); // the completed one, now shown
    keys(win->todoBrowser, "e");
    EXPECT_EQ(Fl::modal(), entryDialog.window);
    EXPECT_STREQ(entryDialog.descriptionInput->value(), "old");
    entryDialog.cancelButton->do_callback();
    // After Year +, Tomorrow (a space on it), Next Week or Today, each counting from today; two
    // days on and one back, priority "3" and category Work2 from their menus, Complete, Save;
    // then Cancel or Escape.
    const std::tuple<Fl_Widget*, int, std::string> entryKeys[] = {
        {entryDialog.tomorrowButton, 0, " ++-peas"},
        {entryDialog.descriptionInput, FL_ALT, "n++-peas"},
        {entryDialog.notesEditor, FL_ALT, "t++-peas"},
        {entryDialog.tomorrowButton, 0, "c"},
        {entryDialog.notesEditor, 0, "\e"}};
    for (auto [focus, state, typed] : entryKeys) {
        keys(win->todoBrowser, "n");
        EXPECT_EQ(Fl::modal(), entryDialog.window);
        EXPECT_STREQ(entryDialog.weekdayOutput->value(),
                     CalDate::weekdayName(CalDate::weekday(t.month, t.day, t.year)));
        entryDialog.yearPlusButton->do_callback();
        if (typed.size() > 1)
            answer({"2", "1"}); // the menus of P and A
        keys(focus, "x");
        keys(focus, typed, state);
        EXPECT_FALSE(entryDialog.window->shown());
    }
    alpha.category = "Unassigned"; // Work was renamed
    EXPECT_TRUE(readFile("pindle_todo.db") ==
                todoFile({alpha,
                          old,
                          {in2.month, in2.day, in2.year, 2, 1, "Work2", "", ""},
                          {week.month, week.day, week.year, 2, 1, "Work2", "x", ""},
                          {tomorrow.month, tomorrow.day, tomorrow.year, 2, 1, "Work2", "", "x"}}));
    clickTwice(win->todoBrowser, entryDialog.window);
    EXPECT_EQ(entryDialog.editing(), 1);
}

} // namespace
