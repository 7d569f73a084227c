// In-process UI test fixture: reloads the real global stores from files written into a fresh
// directory, builds the real main window, answers the real fl_ask/fl_alert boxes, and sends
// keys through the toolkit as the X server would. The windows' widgets come complete with it.
#ifndef PINDLE_TEST_UI_FIXTURE_H
#define PINDLE_TEST_UI_FIXTURE_H

#include "globals.h"
#include "support/temp_dir.h"
#include "todo_window.h"

#include <FL/Fl.H>
#include <FL/Fl_Browser.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Output.H>
#include <FL/Fl_Tabs.H>
#include <FL/Fl_Text_Editor.H>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using Lines = std::vector<std::string>;

// The date so many days from today, and a date as the window shows it ("2/29/2004").
inline CalDate fromToday(int days) {
    CalDate today{};
    CalDate::today(today.month, today.day, today.year);
    return CalDate::addDays(today, days);
}
inline std::string dateText(CalDate d) {
    char buf[256];
    CalDate::format(d.month, d.day, d.year, buf);
    return buf;
}

class UiTest : public TempDirTest {
protected:
    void TearDown() override;

    // Writes the files given (none: no such file), reloads both global stores through their
    // real constructors and builds the main window. Returns what the stores wrote on stderr.
    std::string start(std::optional<std::string> todoFile = {},
                      std::optional<std::string> categoryFile = {});

    // The next question or alert boxes are answered with these buttons, in turn, and menus with
    // a number: that many entries down, then Return. Each box answered is recorded in `boxes`
    // with its message.
    void answer(std::vector<std::string> buttons);
    bool answered() const { return answers_.empty(); }
    std::vector<std::string> boxes;
    // Run once, inside the next box's event loop, just before it is answered.
    std::function<void()> whileAsking;

    // A key press delivered to the widget with the keyboard focus in `window`.
    void press(Fl_Window* window, int key, std::string text = "", int state = 0);

    void switchTab();
    static Lines lines(const Fl_Browser* browser);
    Lines todoLines() const { return lines(win->todoBrowser); }
    // Selects the filter entry with this text and runs the filter's callback.
    void filterBy(const char* text);

    std::unique_ptr<TodoWindow> win;

private:
    static void answerPending(void* self);
    std::vector<std::string> answers_;
    std::string keyText_;
};

#endif
