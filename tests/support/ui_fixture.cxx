// The UI test fixture: global store reloading, window lifetime, boxes, keys and the clipboard.
#include "support/ui_fixture.h"

#include "cal_date.h"
#include "incremental_paste.h"

#include <FL/Fl_Choice.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Output.H>
#include <FL/Fl_Tabs.H>
#include <FL/Fl_Value_Input.H>
#include <FL/x.H>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <new>
#include <spawn.h>
#include <sys/wait.h>

namespace {
// Runs the store's real constructor again in the current directory.
template <class Store> void reload(Store& store) {
    store.clear();
    store.~Store();
    new (&store) Store();
}

bool pump(const std::function<bool()>& done, double seconds) {
    auto until = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!done() && std::chrono::steady_clock::now() < until)
        Fl::wait(0.01);
    return done();
}
} // namespace

std::string UiTest::start(std::optional<std::string> todoFile,
                          std::optional<std::string> categoryFile) {
    if (todoFile)
        writeFile("pindle_todo.db", *todoFile);
    if (categoryFile)
        writeFile("cat.db", *categoryFile);
    testing::internal::CaptureStderr();
    reload(todoStore);
    reload(categoryStore);
    std::string messages = testing::internal::GetCapturedStderr();
    IncrementalPaste::install();
    if (win)
        delete win->window;
    win = std::make_unique<TodoWindow>();
    return messages;
}

void UiTest::TearDown() {
    Fl::remove_timeout(answerPending, this);
    EXPECT_TRUE(answers_.empty()) << "a box that was to be answered never came";
    while (Fl_Window* w = Fl::first_window())
        w->hide();
    if (win)
        delete win->window;
    todoStore.clear();
    categoryStore.clear();
    TempDirTest::TearDown();
}

void UiTest::answer(std::vector<std::string> buttons) {
    answers_ = std::move(buttons);
    Fl::add_timeout(0.01, answerPending, this);
}

// Polls from inside the box's own event loop until a window shows the wanted button.
void UiTest::answerPending(void* self) {
    auto* test = static_cast<UiTest*>(self);
    for (Fl_Window* w = Fl::first_window(); w != nullptr && !test->answers_.empty();
         w = Fl::next_window(w)) {
        Fl_Widget* button = nullptr;
        std::string message;
        for (int i = 0; i < w->children(); i++) {
            Fl_Widget* child = w->child(i);
            std::string label = child->label() ? child->label() : "";
            if (child->visible() && label == test->answers_.front())
                button = child;
            else if (label.size() > message.size())
                message = label;
        }
        if (button != nullptr) {
            test->boxes.push_back(message);
            test->answers_.erase(test->answers_.begin());
            button->do_callback();
            break;
        }
    }
    if (!test->answers_.empty())
        Fl::repeat_timeout(0.01, answerPending, self);
}

void UiTest::press(Fl_Window* window, int key, std::string text, int state) {
    keyText_ = std::move(text);
    Fl::e_keysym = key;
    Fl::e_state = state;
    Fl::e_text = keyText_.data();
    Fl::e_length = static_cast<int>(keyText_.size());
    Fl::handle(FL_KEYBOARD, window);
}

// xclip in the foreground (-quiet) owns the clipboard until it is stopped.
void UiTest::pasteFromClipboard(Fl_Widget* widget, const std::string& bytes,
                                const std::function<bool()>& arrived) {
    writeFile("clipboard", bytes);
    const char* argv[] = {"xclip", "-quiet", "-selection", "clipboard", "-i", "clipboard", nullptr};
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&quiet, 2, "/dev/null", O_WRONLY, 0);
    pid_t owner = 0;
    ASSERT_EQ(posix_spawnp(&owner, "xclip", &quiet, nullptr, const_cast<char**>(argv), environ), 0);
    posix_spawn_file_actions_destroy(&quiet);
    Atom clipboard = XInternAtom(fl_display, "CLIPBOARD", False);
    EXPECT_TRUE(
        pump([clipboard] { return XGetSelectionOwner(fl_display, clipboard) != None; }, 10));
    Fl::focus(widget);
    press(widget->window(), 'v', "\x16", FL_CTRL);
    EXPECT_TRUE(pump(arrived, 10)) << bytes.size() << " bytes never arrived";
    kill(owner, SIGTERM);
    waitpid(owner, nullptr, 0);
}

void UiTest::switchTab() {
    Fl_Widget* other = win->tabs->value() == win->todoGroup
                           ? static_cast<Fl_Widget*>(win->categoryGroup)
                           : win->todoGroup;
    win->tabs->value(other);
    win->tabs->do_callback();
}

std::vector<std::string> UiTest::lines(const Fl_Browser* browser) {
    std::vector<std::string> out;
    for (int i = 1; i <= browser->size(); i++)
        out.emplace_back(browser->text(i));
    return out;
}

void UiTest::filterBy(const char* text) {
    const Fl_Menu_Item* item = win->categoryFilter->find_item(text);
    ASSERT_NE(item, nullptr) << text;
    win->categoryFilter->value(item);
    win->categoryFilter->do_callback();
}

std::string UiTest::shownEntryDate() {
    char buf[256];
    CalDate::format(static_cast<int>(entryDialog.monthInput->value()),
                    static_cast<int>(entryDialog.dayInput->value()),
                    static_cast<int>(entryDialog.yearInput->value()), buf);
    return std::string(buf) + " " + entryDialog.weekdayOutput->value();
}
