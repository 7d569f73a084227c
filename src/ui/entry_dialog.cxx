// The to-do entry dialog: its widgets and the date buttons, which move the shown date by the
// calendar rules and keep the weekday name beside it.
#include "entry_dialog.h"

#include "byte_limit_input.h"
#include "globals.h"
#include "notes_editor.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Output.H>
#include <FL/Fl_Value_Input.H>

#include <algorithm>

namespace {
Fl_Menu_Item priorityMenu[] = {{"1", 0, nullptr, nullptr, 0, FL_NORMAL_LABEL, 0, 14, FL_BLACK},
                               {"2", 0, nullptr, nullptr, 0, FL_NORMAL_LABEL, 0, 14, FL_BLACK},
                               {"3", 0, nullptr, nullptr, 0, FL_NORMAL_LABEL, 0, 14, FL_BLACK},
                               {"4", 0, nullptr, nullptr, 0, FL_NORMAL_LABEL, 0, 14, FL_BLACK},
                               {"5", 0, nullptr, nullptr, 0, FL_NORMAL_LABEL, 0, 14, FL_BLACK},
                               {"6", 0, nullptr, nullptr, 0, FL_NORMAL_LABEL, 0, 14, FL_BLACK},
                               {"7", 0, nullptr, nullptr, 0, FL_NORMAL_LABEL, 0, 14, FL_BLACK},
                               {"8", 0, nullptr, nullptr, 0, FL_NORMAL_LABEL, 0, 14, FL_BLACK},
                               {"9", 0, nullptr, nullptr, 0, FL_NORMAL_LABEL, 0, 14, FL_BLACK},
                               {nullptr, 0, nullptr, nullptr, 0, 0, 0, 0, 0}};

// The date fields are shown but never typed into: only the date buttons change them.
Fl_Value_Input* dateInput(int x, int w, double low, double high) {
    auto* input = new Fl_Value_Input(x, 10, w, 25);
    input->range(low, high);
    input->step(1);
    input->deactivate();
    return input;
}

Fl_Button* dateButton(int x, int y, int w, const char* label, Fl_Callback* callback) {
    auto* button = new Fl_Button(x, y, w, 25, label);
    button->callback(callback);
    return button;
}
} // namespace

template <void (EntryDialog::*Handler)()> void EntryDialog::fromWindow(Fl_Widget* w, void*) {
    (static_cast<EntryDialog*>(w->window()->user_data())->*Handler)();
}

EntryDialog::EntryDialog() {
    window = new Fl_Double_Window(480, 425, "To Do Entry");
    window->set_modal();
    window->user_data(this);
    monthInput = dateInput(10, 25, 1, 12);
    dayInput = dateInput(45, 25, 1, 31);
    yearInput = dateInput(75, 65, 1980, 3000);
    weekdayOutput = new Fl_Output(150, 10, 120, 25);
    weekdayOutput->deactivate();
    buildDateButtons();
    priorityChoice = new Fl_Choice(90, 75, 115, 25, "&Priority:");
    priorityChoice->down_box(FL_BORDER_BOX);
    priorityChoice->menu(priorityMenu);
    completeButton = new Fl_Check_Button(235, 75, 25, 25, "Compl&ete");
    completeButton->down_box(FL_DOWN_BOX);
    categoryChoice = new Fl_Choice(90, 110, 380, 25, "C&ategory:");
    categoryChoice->down_box(FL_BORDER_BOX);
    descriptionInput = new ByteLimitInput(90, 145, 380, 25, "Description:", kDescriptionMax);
    notesEditor = new NotesEditor(10, 185, 460, 205, "Notes", TodoRecord::kNotesMax);
    notesEditor->when(FL_WHEN_CHANGED | FL_WHEN_RELEASE);
    saveButton = new Fl_Button(10, 395, 115, 25, "&Save");
    cancelButton = new Fl_Button(140, 395, 115, 25, "&Cancel");
    window->end();
    notesEditor->buffer(notesBuffer);
    descriptionInput->maximum_size(kDescriptionMax);
    std::copy(CalDate::daysBeforeMonth, CalDate::daysBeforeMonth + 14, daysBeforeMonth);
}

void EntryDialog::buildDateButtons() {
    tomorrowButton = dateButton(300, 10, 80, "Tomorrow", fromWindow<&EntryDialog::tomorrow>);
    // The layout stretches around this button when the user resizes the dialog.
    window->resizable(tomorrowButton);
    nextWeekButton = dateButton(385, 10, 85, "&Next Week", fromWindow<&EntryDialog::nextWeek>);
    dayPlusButton = dateButton(10, 40, 45, "Day &+", fromWindow<&EntryDialog::dayPlus>);
    dayMinusButton = dateButton(60, 40, 45, "Day &-", fromWindow<&EntryDialog::dayMinus>);
    monthPlusButton = dateButton(110, 40, 60, "Month +", fromWindow<&EntryDialog::monthPlus>);
    monthMinusButton = dateButton(175, 40, 55, "Month -", fromWindow<&EntryDialog::monthMinus>);
    yearPlusButton = dateButton(235, 40, 60, "Year +", fromWindow<&EntryDialog::yearPlus>);
    yearMinusButton = dateButton(300, 40, 60, "Year -", fromWindow<&EntryDialog::yearMinus>);
    todayButton = dateButton(365, 40, 65, "&Today", fromWindow<&EntryDialog::setToday>);
}

void EntryDialog::show() {
    window->show();
}

void EntryDialog::clear() {
    monthInput->value(0);
    dayInput->value(0);
    yearInput->value(0);
    descriptionInput->value("");
    priorityChoice->value(0);
    completeButton->value(0);
    notesBuffer.remove(0, notesBuffer.length());
}

void EntryDialog::loadCategories() {
    categoryChoice->clear();
    for (int i = 0; i < categoryStore.count(); i++)
        categoryChoice->add(categoryStore.at(i)->name);
    categoryChoice->value(0);
}

CalDate EntryDialog::shownDate() const {
    return {static_cast<int>(monthInput->value()), static_cast<int>(dayInput->value()),
            static_cast<int>(yearInput->value())};
}

void EntryDialog::showDate(CalDate date) {
    monthInput->value(date.month);
    dayInput->value(date.day);
    yearInput->value(date.year);
}

void EntryDialog::updateWeekday() {
    CalDate d = shownDate();
    weekdayOutput->value(CalDate::weekdayName(CalDate::weekday(d.month, d.day, d.year)));
}

void EntryDialog::setToday() {
    CalDate today{};
    CalDate::today(today.month, today.day, today.year);
    showDate(today);
    updateWeekday();
}

void EntryDialog::addDays(int n) {
    showDate(CalDate::addDays(shownDate(), n));
    updateWeekday();
}

// The month and year moves leave the day to the dialog's own clamp.
void EntryDialog::addMonths(int n) {
    CalDate moved = CalDate::carryMonths(shownDate(), n);
    monthInput->value(moved.month);
    yearInput->value(moved.year);
    clampDay();
    updateWeekday();
}

void EntryDialog::subtractMonths(int n) {
    CalDate moved = CalDate::borrowMonths(shownDate(), n);
    yearInput->value(moved.year);
    monthInput->value(moved.month);
    clampDay();
    updateWeekday();
}

void EntryDialog::addYears(int n) {
    yearInput->value(CalDate::shiftYears(shownDate(), n).year);
    clampDay();
}

void EntryDialog::clampDay() {
    CalDate d = shownDate();
    int length = CalDate::monthLength(daysBeforeMonth, d.month, d.year);
    dayInput->value(d.day > length ? length : d.day);
}

void EntryDialog::tomorrow() {
    setToday();
    addDays(1);
}

void EntryDialog::nextWeek() {
    setToday();
    addDays(7);
}

void EntryDialog::dayPlus() {
    addDays(1);
}
void EntryDialog::dayMinus() {
    addDays(-1);
}
void EntryDialog::monthPlus() {
    addMonths(1);
}
void EntryDialog::monthMinus() {
    subtractMonths(1);
}
void EntryDialog::yearPlus() {
    addYears(1);
}
void EntryDialog::yearMinus() {
    addYears(-1);
}
