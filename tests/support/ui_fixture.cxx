// The UI test fixture: global store reloading, window lifetime and dialog answering.
#include "support/ui_fixture.h"

#include "cal_date.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Output.H>
#include <FL/Fl_Tabs.H>
#include <FL/Fl_Value_Input.H>

#include <new>

namespace {
// Frees the records, then runs the store's real constructor again in the current directory.
template <class Store> void reload(Store& store) {
    while (store.head != nullptr)
        store.remove(store.head);
    store.~Store();
    new (&store) Store();
}

void hideAll() {
    while (Fl_Window* w = Fl::first_window())
        w->hide();
}
} // namespace

std::string UiTest::start(const std::string* todoFile, const std::string* categoryFile) {
    if (todoFile != nullptr)
        writeFile("pindle_todo.db", *todoFile);
    if (categoryFile != nullptr)
        writeFile("cat.db", *categoryFile);
    testing::internal::CaptureStderr();
    reload(todoStore);
    reload(categoryStore);
    std::string messages = testing::internal::GetCapturedStderr();
    win = std::make_unique<TodoWindow>();
    return messages;
}

void UiTest::TearDown() {
    Fl::remove_timeout(answerPending, this);
    EXPECT_TRUE(answers_.empty()) << "a box that was to be answered never came";
    hideAll();
    if (win)
        delete win->window;
    while (todoStore.head != nullptr)
        todoStore.remove(todoStore.head);
    while (categoryStore.head != nullptr)
        categoryStore.remove(categoryStore.head);
    TempDirTest::TearDown();
}

void UiTest::answer(std::vector<std::string> buttons) {
    answers_ = std::move(buttons);
    Fl::add_timeout(0.01, answerPending, this);
}

// Polls from inside the box's own event loop until a window shows the wanted button.
void UiTest::answerPending(void* self) {
    auto* test = static_cast<UiTest*>(self);
    if (test->answers_.empty())
        return;
    for (Fl_Window* w = Fl::first_window(); w != nullptr; w = Fl::next_window(w)) {
        Fl_Widget* button = nullptr;
        std::string message;
        for (int i = 0; i < w->children(); i++) {
            Fl_Widget* child = w->child(i);
            const char* label = child->label() ? child->label() : "";
            if (child->visible() && label == test->answers_.front())
                button = child;
            else if (std::string(label).size() > message.size())
                message = label;
        }
        if (button != nullptr) {
            test->boxes.push_back(message);
            test->answers_.erase(test->answers_.begin());
            button->do_callback();
            break;
        }
    }
    Fl::repeat_timeout(0.01, answerPending, self);
}

void UiTest::switchTab() {
    Fl_Widget* other = win->tabs->value() == win->todoGroup
                           ? static_cast<Fl_Widget*>(win->categoryGroup)
                           : win->todoGroup;
    win->tabs->value(other);
    win->tabs->do_callback();
}

void UiTest::selectLine(Fl_Browser* browser, int line) {
    browser->value(line);
}

std::vector<std::string> UiTest::lines(const Fl_Browser* browser) const {
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

std::string UiTest::todayText() const {
    int m = 0, d = 0, y = 0;
    CalDate::today(m, d, y);
    char buf[256];
    CalDate::format(m, d, y, buf);
    return buf;
}

std::string UiTest::shownEntryDate() {
    char buf[256];
    CalDate::format(static_cast<int>(entryDialog.monthInput->value()),
                    static_cast<int>(entryDialog.dayInput->value()),
                    static_cast<int>(entryDialog.yearInput->value()), buf);
    return std::string(buf) + " " + entryDialog.weekdayOutput->value();
}
