// Every widget of the main window and of the three dialogs as one table, compared with the live
// widgets: the tree and its order (which is also the order of the keyboard focus), the class,
// the rectangle, the label, type, alignment, callback condition, down box, whether it takes
// input, and the letter that reaches it. The same table holds on FLTK 1.3 and 1.4.
#include "support/ui_fixture.h"
// After GoogleTest: the toolkit's headers may bring X11's, which define None.
#include "byte_limit_input.h"
#include "notes_editor.h"

#include <FL/Fl_Value_Input.H>

#include <algorithm>
#include <tuple>
#include <typeinfo>

namespace {

using WidgetTable = UiTest;

struct Row {
    Fl_Widget* widget;
    const std::type_info& kind;
    int x, y, w, h; // a window's position is the desktop's: -1
    const char* label;
    int type, align, when, downBox; // downBox -1: the class has none
    bool active;
    char key; // the letter of the label's '&' that reaches the widget, 0: none
};

constexpr int L = FL_ALIGN_LEFT, T = FL_ALIGN_TOP, C = FL_ALIGN_CENTER, TL = T | L;
constexpr int Rel = FL_WHEN_RELEASE, Chg = FL_WHEN_CHANGED, Not = FL_WHEN_NOT_CHANGED;
constexpr int Out = FL_NORMAL_OUTPUT, Hold = FL_HOLD_BROWSER, Border = FL_BORDER_BOX;
constexpr int Win = FL_DOUBLE_WINDOW;

// The rows of the kinds that recur, as this program builds every widget of that kind.
Row window(Fl_Window* w, int wide, int high, const char* title, int align = T) {
    return {w, typeid(Fl_Double_Window), -1, -1, wide, high, title, Win, align, Rel, -1, true, 0};
}
Row button(Fl_Widget* b, int x, int y, int w, const char* label, char key = 0) {
    return {b, typeid(Fl_Button), x, y, w, 25, label, 0, C, Rel, 0, true, key};
}
Row group(Fl_Widget* g, int x, int y, int w, int h, const char* label) {
    return {g, typeid(Fl_Group), x, y, w, h, label, 0, T, Rel, -1, true, 0};
}
Row choice(Fl_Widget* c, int x, int y, int w, const char* label, char key) {
    return {c, typeid(Fl_Choice), x, y, w, 25, label, 0, L, Rel, Border, true, key};
}
Row browser(Fl_Widget* b, int x, int y, int w, int h, const char* label) {
    return {b, typeid(Fl_Browser), x, y, w, h, label, Hold, TL, Not, -1, true, 0};
}
Row date(Fl_Widget* in, int x, int w) {
    return {in, typeid(Fl_Value_Input), x, 10, w, 25, nullptr, 0, L, Chg, -1, false, 0};
}

std::vector<Row> mainRows(const TodoWindow& m) {
    return {window(m.window, 640, 480, "To Do List", T | FL_ALIGN_TEXT_OVER_IMAGE),
            {m.showCompletedButton, typeid(Fl_Check_Button), 280, 5, 25, 25, "&Show Completed",
             FL_TOGGLE_BUTTON, L, Chg, FL_DOWN_BOX, true, 's'},
            {m.todayOutput, typeid(Fl_Output), 400, 5, 95, 25, "Today's Date:", Out, L, Rel, -1,
             false, 0},
            button(m.purgeButton, 500, 5, 60, "&Purge", 'p'),
            button(m.aboutButton, 565, 5, 60, "&About", 'a'),
            {m.tabs, typeid(Fl_Tabs), 5, 25, 630, 455, nullptr, 0, T, Rel, -1, true, 0},
            group(m.todoGroup, 5, 50, 620, 430, "Todo List"),
            browser(m.todoBrowser, 15, 110, 605, 365, "To-Do List"),
            button(m.newTodoButton, 450, 65, 50, "&New", 'n'),
            button(m.deleteTodoButton, 565, 65, 55, "&Delete", 'd'),
            button(m.editTodoButton, 510, 65, 45, "&Edit", 'e'),
            choice(m.categoryFilter, 75, 65, 345, "Ca&tegory:", 't'),
            group(m.categoryGroup, 10, 55, 610, 423, "Category"),
            browser(m.categoryBrowser, 80, 105, 435, 280, "Category List"),
            button(m.newCategoryButton, 360, 420, 65, "&New", 'n'),
            button(m.editCategoryButton, 435, 420, 65, "&Edit", 'e'),
            button(m.deleteCategoryButton, 510, 420, 65, "&Delete", 'd')};
}

std::vector<Row> entryRows(const EntryDialog& e) {
    return {
        window(e.window, 480, 425, "To Do Entry"),
        date(e.monthInput, 10, 25),
        date(e.dayInput, 45, 25),
        date(e.yearInput, 75, 65),
        {e.weekdayOutput, typeid(Fl_Output), 150, 10, 120, 25, nullptr, Out, L, Rel, -1, false, 0},
        button(e.tomorrowButton, 300, 10, 80, "Tomorrow"),
        button(e.nextWeekButton, 385, 10, 85, "&Next Week", 'n'),
        button(e.dayPlusButton, 10, 40, 45, "Day &+", '+'),
        button(e.dayMinusButton, 60, 40, 45, "Day &-", '-'),
        button(e.monthPlusButton, 110, 40, 60, "Month +"),
        button(e.monthMinusButton, 175, 40, 55, "Month -"),
        button(e.yearPlusButton, 235, 40, 60, "Year +"),
        button(e.yearMinusButton, 300, 40, 60, "Year -"),
        button(e.todayButton, 365, 40, 65, "&Today", 't'),
        choice(e.priorityChoice, 90, 75, 115, "&Priority:", 'p'),
        {e.completeButton, typeid(Fl_Check_Button), 235, 75, 25, 25, "Compl&ete", FL_TOGGLE_BUTTON,
         L | FL_ALIGN_INSIDE, Rel, FL_DOWN_BOX, true, 'e'},
        choice(e.categoryChoice, 90, 110, 380, "C&ategory:", 'a'),
        {e.descriptionInput, typeid(ByteLimitInput), 90, 145, 380, 25, "Description:", 0, L, Rel,
         -1, true, 0},
        {e.notesEditor, typeid(NotesEditor), 10, 185, 460, 205, "Notes", 0, T, Chg | Rel, -1, true,
         0},
        button(e.saveButton, 10, 395, 115, "&Save", 's'),
        button(e.cancelButton, 140, 395, 115, "&Cancel", 'c')};
}

std::vector<Row> categoryRows(const CategoryDialog& c) {
    return {
        window(c.window, 420, 100, "Category Edit"),
        {c.nameInput, typeid(ByteLimitInput), 70, 5, 340, 25, "Category:", 0, L, Rel, -1, true, 0},
        button(c.saveButton, 255, 65, 65, "&Save", 's'),
        button(c.cancelButton, 330, 65, 75, "&Cancel", 'c')};
}

std::vector<Row> aboutRows(const AboutDialog& a) {
    return {window(a.window, 295, 235, "About Pindle ToDo"),
            button(a.okButton, 115, 200, 55, "Ok"),
            {a.aboutText, typeid(Fl_Output), 5, 10, 285, 185, nullptr, FL_MULTILINE_OUTPUT, L, Rel,
             -1, true, 0}};
}

// The widgets a window holds, depth first: its own groups are entered, the toolkit's inner
// parts of a widget (a browser's scrollbars) are not.
void collect(Fl_Widget* w, std::vector<Fl_Widget*>& out) {
    out.push_back(w);
    Fl_Group* g = w->as_group();
    if (g == nullptr ||
        !(w->as_window() || typeid(*w) == typeid(Fl_Group) || typeid(*w) == typeid(Fl_Tabs)))
        return;
    for (int i = 0; i < g->children(); i++)
        collect(g->child(i), out);
}

// Widgets by their table row: "row 3" (the window is row 0).
std::vector<std::string> names(const std::vector<Row>& rows, const std::vector<Fl_Widget*>& ws) {
    std::vector<std::string> out;
    for (Fl_Widget* w : ws) {
        auto row =
            std::find_if(rows.begin(), rows.end(), [&](const Row& r) { return r.widget == w; });
        out.push_back(row == rows.end() ? "not in the table"
                                        : "row " + std::to_string(row - rows.begin()));
    }
    return out;
}

auto seen(const Row& r) {
    Fl_Widget* w = r.widget;
    int downBox = -1;
    if (auto* b = dynamic_cast<Fl_Button*>(w))
        downBox = b->down_box();
    if (auto* c = dynamic_cast<Fl_Choice*>(w))
        downBox = c->down_box();
    return std::make_tuple(std::string(typeid(*w).name()), r.x < 0 ? -1 : w->x(),
                           r.y < 0 ? -1 : w->y(), w->w(), w->h(),
                           std::string(w->label() ? w->label() : ""), int(w->type()),
                           int(w->align()), int(w->when()), downBox, w->active() != 0);
}

auto wanted(const Row& r) {
    return std::make_tuple(std::string(r.kind.name()), r.x, r.y, r.w, r.h,
                           std::string(r.label ? r.label : ""), r.type, r.align, r.when, r.downBox,
                           r.active);
}

void record(Fl_Widget* w, void* hits) {
    static_cast<std::vector<Fl_Widget*>*>(hits)->push_back(w);
}

TEST_F(WidgetTable, EveryWidgetAsTheTableHasIt) {
    start();
    for (const auto& rows : {mainRows(*win), entryRows(entryDialog), categoryRows(categoryDialog),
                             aboutRows(aboutDialog)}) {
        std::vector<Fl_Widget*> tree, listed;
        collect(rows.front().widget, tree);
        for (const Row& r : rows)
            listed.push_back(r.widget);
        EXPECT_EQ(names(rows, tree), names(rows, listed)) << rows.front().widget->label();
        for (std::size_t i = 0; i < rows.size(); i++)
            EXPECT_EQ(seen(rows[i]), wanted(rows[i]))
                << rows.front().widget->label() << ", row " << i;
    }
}

// Alt and the letter reach the widget it marks, and only that one: a button's or check button's
// callback runs, a choice opens its menu. The to-do tab's letters work once it is in front.
TEST_F(WidgetTable, EachLetterReachesItsWidget) {
    start();
    entryDialog.loadCategories(); // an empty choice opens no menu
    for (const auto& rows :
         {mainRows(*win), entryRows(entryDialog), categoryRows(categoryDialog)}) {
        auto* window = rows.front().widget->as_window();
        window->show();
        std::vector<Fl_Widget*> hits;
        std::vector<std::tuple<Fl_Widget*, Fl_Callback*, void*>> saved;
        for (const Row& r : rows) {
            if (r.widget == window)
                continue;
            saved.emplace_back(r.widget, r.widget->callback(), r.widget->user_data());
            r.widget->callback(record, &hits);
        }
        for (const Row& r : rows) {
            if (r.key == 0)
                continue;
            if (r.widget->parent()->parent() == win->tabs)
                win->tabs->value(r.widget->parent());
            hits.clear();
            bool menu = dynamic_cast<Fl_Choice*>(r.widget) != nullptr;
            if (menu)
                answer({"0"}); // the entry shown stays: nothing is picked
            press(window, r.key, std::string(1, r.key), FL_ALT);
            EXPECT_EQ(hits, menu ? std::vector<Fl_Widget*>{} : std::vector{r.widget}) << r.label;
            EXPECT_TRUE(answered()) << r.label << ": no menu opened";
        }
        for (auto [w, callback, data] : saved)
            w->callback(callback, data);
        if (window != win->window)
            window->hide();
    }
}

// What the table's columns leave out: who each window belongs to, which are modal and what
// stretches when they are resized; the date fields' ranges, the texts' limits, the list's
// columns, the priorities and the About text.
TEST_F(WidgetTable, WindowsFieldsAndFixedContents) {
    start();
    const std::tuple<Fl_Window*, void*, bool, Fl_Widget*> windows[] = {
        {win->window, win.get(), false, win->window},
        {entryDialog.window, &entryDialog, true, entryDialog.tomorrowButton},
        {categoryDialog.window, &categoryDialog, true, nullptr},
        {aboutDialog.window, &aboutDialog, true, nullptr}};
    for (auto [window, owner, modal, resizable] : windows)
        EXPECT_EQ(std::make_tuple(window->user_data(), window->modal() != 0, window->resizable()),
                  std::make_tuple(owner, modal, resizable))
            << window->label();
    const std::tuple<Fl_Value_Input*, double, double> ranges[] = {
        {entryDialog.monthInput, 1, 12},
        {entryDialog.dayInput, 1, 31},
        {entryDialog.yearInput, 1980, 3000}};
    for (auto [input, low, high] : ranges)
        EXPECT_EQ(std::make_tuple(input->minimum(), input->maximum(), input->step()),
                  std::make_tuple(low, high, 1.0));
    EXPECT_EQ(entryDialog.descriptionInput->maximum_size(), 50);
    EXPECT_EQ(categoryDialog.nameInput->maximum_size(), 50);
    EXPECT_EQ(entryDialog.notesEditor->buffer(), &entryDialog.notesBuffer);
    const int* widths = win->todoBrowser->column_widths();
    EXPECT_EQ(std::vector<int>(widths, widths + 5), (std::vector<int>{20, 100, 100, 100, 0}));
    EXPECT_EQ(win->todoBrowser->column_char(), '\t');
    EXPECT_EQ(win->categoryBrowser->column_widths()[0], 0); // one column: the name
    for (int i = 0; i < 10; i++) {
        const Fl_Menu_Item& item = entryDialog.priorityChoice->menu()[i];
        EXPECT_EQ(std::make_tuple(std::string(item.label() ? item.label() : "(end)"), item.flags,
                                  item.labelfont(), item.labelsize(), item.labelcolor()),
                  std::make_tuple(i < 9 ? std::to_string(i + 1) : "(end)", 0, 0, i < 9 ? 14 : 0,
                                  i < 9 ? FL_BLACK : 0))
            << i;
    }
    std::string about = aboutDialog.aboutText->value();
    EXPECT_EQ(about.rfind("Pindle ToDo Version 1.5\nReleased 3/25/2005\n", 0), 0u) << about;
    EXPECT_EQ(std::count(about.begin(), about.end(), '\n'), 4) << about;
    EXPECT_NE(about.back(), '\n');
}

} // namespace
