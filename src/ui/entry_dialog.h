// The modal "To Do Entry" window in which one to-do is created or edited. It owns the date
// buttons' behaviour; reading and writing the to-do itself is left to the main window.
#ifndef PINDLE_ENTRY_DIALOG_H
#define PINDLE_ENTRY_DIALOG_H

#include "cal_date.h"

#include <FL/Fl_Text_Buffer.H>

class Fl_Button;
class Fl_Check_Button;
class Fl_Choice;
class Fl_Double_Window;
class Fl_Input;
class Fl_Output;
class Fl_Text_Editor;
class Fl_Value_Input;
class Fl_Widget;

class EntryDialog {
public:
    // Longest description in bytes: it may fill its record field, terminator not included.
    static constexpr int kDescriptionMax = 50;

    EntryDialog();
    // Owns one window of the toolkit's for the whole run: never copied.
    EntryDialog(const EntryDialog&) = delete;
    EntryDialog& operator=(const EntryDialog&) = delete;
    void show();
    // Date fields 0, description and notes empty, priority "1", not completed. The category
    // choice and the weekday are left as they are.
    void clear();
    // 0 while the dialog holds a new to-do, 1 while it holds an existing one.
    void setEditing(int mode) { editing_ = mode; }
    int editing() const { return editing_; }

    void loadCategories();
    // The date fields, read with truncation toward zero; written as whole numbers.
    CalDate shownDate() const;
    void showDate(CalDate date);
    void updateWeekday();
    void setToday();
    void addDays(int n);
    void addMonths(int n);
    void subtractMonths(int n);
    // Leaves the weekday name as it was: "Year +" and "Year -" do not refresh it.
    void addYears(int n);
    void clampDay();

    Fl_Double_Window* window;
    Fl_Value_Input* monthInput;
    Fl_Value_Input* dayInput;
    Fl_Value_Input* yearInput;
    Fl_Output* weekdayOutput;
    Fl_Button* tomorrowButton;
    Fl_Button* nextWeekButton;
    Fl_Button* dayPlusButton;
    Fl_Button* dayMinusButton;
    Fl_Button* monthPlusButton;
    Fl_Button* monthMinusButton;
    Fl_Button* yearPlusButton;
    Fl_Button* yearMinusButton;
    Fl_Button* todayButton;
    Fl_Choice* priorityChoice;
    Fl_Check_Button* completeButton;
    Fl_Choice* categoryChoice;
    Fl_Input* descriptionInput;
    Fl_Text_Editor* notesEditor;
    Fl_Button* saveButton;
    Fl_Button* cancelButton;

    Fl_Text_Buffer notesBuffer;

private:
    void tomorrow();
    void nextWeek();
    void dayPlus();
    void dayMinus();
    void monthPlus();
    void monthMinus();
    void yearPlus();
    void yearMinus();
    void buildDateButtons();

    // Date buttons find the dialog through their window's user data.
    template <void (EntryDialog::*Handler)()> static void fromWindow(Fl_Widget* w, void*);

    int editing_ = 0;
    int daysBeforeMonth[14];
};

#endif
