// The UI test fixture: global store reloading, window lifetime, boxes and keys.
#include "support/ui_fixture.h"

#include <cctype>
#include <new>
#include <utility>

// Runs the store's real constructor again in the current directory.
template <class Store> static void reload(Store& store) {
    store.clear();
    store.~Store();
    new (&store) Store();
}

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
    if (win)
        delete win->window;
    win = std::make_unique<TodoWindow>();
    win->window->wait_for_expose(); // so that Fl::flush() draws it
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

// Polls from inside the box's own event loop until a window shows the wanted button; the
// box's longest label is its message.
void UiTest::answerPending(void* self) {
    auto* test = static_cast<UiTest*>(self);
    Fl::repeat_timeout(0.01, answerPending, self);
    // A menu holds the pointer while it is shown, and a while after; the next is waited for anew.
    if (std::isdigit(static_cast<unsigned char>(test->answers_.front()[0]))) {
        if (Fl::grab() == nullptr || !Fl::grab()->shown())
            return;
        Fl::remove_timeout(answerPending, self);
        for (int i = std::stoi(test->answers_.front()); i > 0; i--)
            test->press(Fl::grab(), FL_Down);
        test->press(Fl::grab(), FL_Enter);
        test->answers_.erase(test->answers_.begin());
        if (!test->answers_.empty())
            Fl::add_timeout(0.01, answerPending, self);
        return;
    }
    for (Fl_Window* w = Fl::first_window(); w != nullptr; w = Fl::next_window(w)) {
        Fl_Widget* button = nullptr;
        std::string message;
        for (int i = 0; i < w->children(); i++) {
            std::string label = w->child(i)->label() ? w->child(i)->label() : "";
            if (w->child(i)->visible() && label == test->answers_.front())
                button = w->child(i);
            message = label.size() > message.size() ? label : message;
        }
        if (button == nullptr)
            continue;
        if (test->whileAsking)
            std::exchange(test->whileAsking, nullptr)();
        test->boxes.push_back(message);
        test->answers_.erase(test->answers_.begin());
        if (test->answers_.empty())
            Fl::remove_timeout(answerPending, self);
        button->do_callback();
        return;
    }
}

void UiTest::press(Fl_Window* window, int key, std::string text, int state) {
    keyText_ = std::move(text);
    Fl::e_keysym = key;
    Fl::e_state = state;
    Fl::e_text = keyText_.data();
    Fl::e_length = static_cast<int>(keyText_.size());
    Fl::belowmouse(nullptr); // the pointer over no widget: a shortcut goes to the modal window
    Fl::handle(FL_KEYBOARD, window);
}

void UiTest::switchTab() {
    win->tabs->value(win->tabs->value() == win->todoGroup ? win->categoryGroup : win->todoGroup);
    win->tabs->do_callback();
}

Lines UiTest::lines(const Fl_Browser* browser) {
    Lines out;
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
