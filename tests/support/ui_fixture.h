// In-process UI test fixture: reloads the real global stores from files written into a fresh
// directory, builds the real main window, and answers the real fl_ask/fl_alert boxes.
#ifndef PINDLE_TEST_UI_FIXTURE_H
#define PINDLE_TEST_UI_FIXTURE_H

#include "globals.h"
#include "support/temp_dir.h"
#include "todo_window.h"

#include <FL/Fl.H>
#include <FL/Fl_Browser.H>

#include <memory>
#include <string>
#include <vector>

class UiTest : public TempDirTest {
protected:
    void TearDown() override;

    // Writes the files that are given (nullptr: no such file), reloads both global stores
    // through their real constructors and builds the main window. Returns what the stores
    // wrote on stderr.
    std::string start(const std::string* todoFile, const std::string* categoryFile);
    std::string start() { return start(nullptr, nullptr); }

    // The next question or alert box is answered with the button labelled `button`. Each box
    // seen is recorded in `boxes` with its message text.
    void answer(std::vector<std::string> buttons);
    std::vector<std::string> boxes;

    void switchTab();
    void selectLine(Fl_Browser* browser, int line);
    std::vector<std::string> lines(const Fl_Browser* browser) const;
    std::vector<std::string> todoLines() const { return lines(win->todoBrowser); }
    // Selects the filter entry with this text and runs the filter's callback.
    void filterBy(const char* text);
    std::string todayText() const;
    // The entry dialog's date fields and weekday, as "2/28/2005 Monday".
    static std::string shownEntryDate();

    std::unique_ptr<TodoWindow> win;

private:
    static void answerPending(void* self);
    std::vector<std::string> answers_;
};

#endif
