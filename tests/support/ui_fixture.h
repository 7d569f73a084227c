// In-process UI test fixture: reloads the real global stores from files written into a fresh
// directory, builds the real main window, answers the real fl_ask/fl_alert boxes, and sends
// keys through the toolkit as the X server would.
#ifndef PINDLE_TEST_UI_FIXTURE_H
#define PINDLE_TEST_UI_FIXTURE_H

#include "globals.h"
#include "support/temp_dir.h"
#include "todo_window.h"

#include <FL/Fl.H>
#include <FL/Fl_Browser.H>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

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
    std::vector<std::string> boxes;
    // Run once, inside the next box's event loop, just before it is answered.
    std::function<void()> whileAsking;

    // A key press delivered to the widget with the keyboard focus in `window`.
    void press(Fl_Window* window, int key, std::string text = "", int state = 0);

    void switchTab();
    static std::vector<std::string> lines(const Fl_Browser* browser);
    std::vector<std::string> todoLines() const { return lines(win->todoBrowser); }
    // Selects the filter entry with this text and runs the filter's callback.
    void filterBy(const char* text);

    std::unique_ptr<TodoWindow> win;

private:
    static void answerPending(void* self);
    std::vector<std::string> answers_;
    std::string keyText_;
};

#endif
