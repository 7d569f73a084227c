// The main window: construction, and the handlers of both tabs and of the edit dialogs.
// Every change is made in memory, written to its file at once, and the affected list rebuilt.
#include "todo_window.h"

#include "browser_text.h"
#include "cal_date.h"
#include "category_dialog.h"
#include "entry_dialog.h"
#include "globals.h"
#include "todo_line.h"

#include <FL/Fl_Browser.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Group.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Output.H>
#include <FL/Fl_Tabs.H>
#include <FL/Fl_Text_Buffer.H>
#include <FL/fl_ask.H>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {
// fl_ask is deprecated for its "Yes"/"No" buttons, which are exactly the buttons wanted here.
bool confirm(const char* question) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    return fl_ask("%s", question) == 1;
#pragma GCC diagnostic pop
}

// An empty choice has no selected entry and no text.
const char* selectedText(const Fl_Choice* choice) {
    const char* text = choice->text();
    return text != nullptr ? text : "";
}

// Selects the first plain entry whose text is `name`; submenu titles and their ends, which
// Fl_Menu_::add makes of names holding "/", never match.
void selectByText(Fl_Choice* choice, const char* name) {
    const Fl_Menu_Item* items = choice->menu();
    for (int i = 0; i < choice->size(); i++) {
        const char* label = items[i].label();
        if (label != nullptr && !items[i].submenu() && std::strcmp(label, name) == 0) {
            choice->value(i);
            return;
        }
    }
}

template <class Record> Record* selectedRecord(const Fl_Browser* browser) {
    int line = browser->value();
    return line == 0 ? nullptr : static_cast<Record*>(browser->data(line));
}

// Selects the line of `record`, if it is listed.
void selectLine(Fl_Browser* browser, const void* record) {
    for (int line = 1; record != nullptr && line <= browser->size(); line++) {
        if (browser->data(line) == record) {
            browser->value(line);
            return;
        }
    }
}

int descriptionLength(const TodoRecord& r) {
    return static_cast<int>(strnlen(r.description, sizeof r.description));
}

// A full-length description has no terminator of its own: it runs on into the notes.
std::string shownDescription(const TodoRecord& r) {
    const auto length = static_cast<std::size_t>(descriptionLength(r));
    return length < sizeof r.description ? r.description
                                         : std::string(r.description, length) + r.notes();
}
} // namespace

template <void (TodoWindow::*Handler)()> void TodoWindow::fromWindow(Fl_Widget* w, void*) {
    (static_cast<TodoWindow*>(w->window()->user_data())->*Handler)();
}

template <void (TodoWindow::*Handler)()> void TodoWindow::fromUserData(Fl_Widget*, void* self) {
    (static_cast<TodoWindow*>(self)->*Handler)();
}

void TodoWindow::showAbout(Fl_Widget*, void*) {
    aboutDialog.show();
}

void TodoWindow::filesChanged(void* self) {
    static_cast<TodoWindow*>(self)->followFiles();
}

TodoWindow::TodoWindow()
    : folder_(todoStore, categoryStore), watch_(filesChanged, this), editedTodoAt_(-1),
      editedCategoryAt_(-1) {
    // The stores loaded before the folder was locked: a file another program wrote meanwhile is
    // read again, so the two are seen as they stood together.
    folder_.refresh();
    window = new Fl_Double_Window(640, 480, "To Do List");
    window->user_data(this);
    window->align(Fl_Align(FL_ALIGN_TOP | FL_ALIGN_TEXT_OVER_IMAGE));
    buildTopStrip();
    tabs = new Fl_Tabs(5, 25, 630, 455);
    tabs->callback(fromWindow<&TodoWindow::tabChanged>);
    buildTodoTab();
    buildCategoryTab();
    tabs->end();
    window->end();
    window->resizable(window);
    window->show();
    wireDialogs();
    showCompletedButton->value(0);
    // The filter choice is still empty here, which means no filter.
    fillTodoBrowser();
    fillCategoryChoice();
    fillCategoryBrowser();
    todoBrowser->column_widths(TodoLine::kColumnWidths);
    todoBrowser->column_char('\t');
}

void TodoWindow::buildTopStrip() {
    showCompletedButton = new Fl_Check_Button(280, 5, 25, 25, "&Show Completed");
    showCompletedButton->down_box(FL_DOWN_BOX);
    showCompletedButton->align(FL_ALIGN_LEFT);
    showCompletedButton->when(FL_WHEN_CHANGED);
    showCompletedButton->callback(fromWindow<&TodoWindow::fillTodoBrowser>);
    todayOutput = new Fl_Output(400, 5, 95, 25, "Today's Date:");
    todayOutput->deactivate();
    purgeButton = new Fl_Button(500, 5, 60, 25, "&Purge");
    purgeButton->callback(fromWindow<&TodoWindow::purgeTodos>);
    aboutButton = new Fl_Button(565, 5, 60, 25, "&About");
    aboutButton->callback(showAbout);
}

// Created New, Delete, Edit, then the filter, whatever their places on screen: this is also
// the order in which Tab moves the focus.
void TodoWindow::buildTodoTab() {
    todoGroup = new Fl_Group(5, 50, 620, 430, "Todo List");
    // Hidden, so the tabs open on the category tab.
    todoGroup->hide();
    todoBrowser = new Fl_Browser(15, 110, 605, 365, "To-Do List");
    todoBrowser->type(FL_HOLD_BROWSER);
    todoBrowser->align(FL_ALIGN_TOP_LEFT);
    todoBrowser->when(FL_WHEN_NOT_CHANGED);
    todoBrowser->callback(fromWindow<&TodoWindow::editTodo>);
    newTodoButton = new Fl_Button(450, 65, 50, 25, "&New");
    newTodoButton->callback(fromWindow<&TodoWindow::newTodo>);
    deleteTodoButton = new Fl_Button(565, 65, 55, 25, "&Delete");
    deleteTodoButton->callback(fromWindow<&TodoWindow::deleteTodo>);
    editTodoButton = new Fl_Button(510, 65, 45, 25, "&Edit");
    editTodoButton->callback(fromWindow<&TodoWindow::editTodo>);
    categoryFilter = new Fl_Choice(75, 65, 345, 25, "Ca&tegory:");
    categoryFilter->down_box(FL_BORDER_BOX);
    categoryFilter->callback(fromWindow<&TodoWindow::fillTodoBrowser>);
    todoGroup->end();
}

void TodoWindow::buildCategoryTab() {
    categoryGroup = new Fl_Group(10, 55, 610, 423, "Category");
    categoryBrowser = new Fl_Browser(80, 105, 435, 280, "Category List");
    categoryBrowser->type(FL_HOLD_BROWSER);
    categoryBrowser->align(FL_ALIGN_TOP_LEFT);
    categoryBrowser->when(FL_WHEN_NOT_CHANGED);
    categoryBrowser->callback(fromWindow<&TodoWindow::editCategory>);
    newCategoryButton = new Fl_Button(360, 420, 65, 25, "&New");
    newCategoryButton->callback(fromWindow<&TodoWindow::newCategory>);
    editCategoryButton = new Fl_Button(435, 420, 65, 25, "&Edit");
    editCategoryButton->callback(fromWindow<&TodoWindow::editCategory>);
    deleteCategoryButton = new Fl_Button(510, 420, 65, 25, "&Delete");
    deleteCategoryButton->callback(fromWindow<&TodoWindow::deleteCategory>);
    categoryGroup->end();
}

void TodoWindow::wireDialogs() {
    entryDialog.cancelButton->callback(fromUserData<&TodoWindow::cancelTodo>, this);
    entryDialog.saveButton->callback(fromUserData<&TodoWindow::saveTodo>, this);
    categoryDialog.cancelButton->callback(fromUserData<&TodoWindow::cancelCategory>, this);
    categoryDialog.saveButton->callback(fromUserData<&TodoWindow::saveCategory>, this);
}

// Lists the to-dos that pass the filter and "&Show Completed", in date and priority order.
void TodoWindow::fillTodoBrowser() {
    int month = 0, day = 0, year = 0;
    CalDate::today(month, day, year);
    int todayNumber = CalDate::dayNumber(month, day, year);
    todoBrowser->clear();
    showToday();
    bool filtered = categoryFilter->value() > 0;
    const char* filter = selectedText(categoryFilter);
    bool showCompleted = showCompletedButton->value() == 1;
    std::vector<TodoLine::Listed> listed;
    listed.reserve(static_cast<std::size_t>(todoStore.count()));
    for (int i = 0; i < todoStore.count(); i++) {
        TodoRecord* r = todoStore.at(i);
        if (filtered && std::strcmp(filter, r->category) != 0)
            continue;
        int dayNumber = TodoLine::dayNumberOf(*r);
        TodoLine::Form form = TodoLine::formOf(*r, dayNumber, todayNumber);
        if (form == TodoLine::Form::Completed && !showCompleted)
            continue;
        listed.push_back({r, dayNumber, r->priority, form});
    }
    TodoLine::sortForList(listed);
    for (const TodoLine::Listed& l : listed) {
        char line[TodoLine::kLineSize];
        TodoLine::format(*l.record, l.form, line);
        todoBrowser->add(line, l.record);
    }
}

void TodoWindow::showToday() {
    int month = 0, day = 0, year = 0;
    CalDate::today(month, day, year);
    char text[256];
    CalDate::format(month, day, year, text);
    todayOutput->value(text);
}

void TodoWindow::fillCategoryChoice() {
    categoryFilter->clear();
    categoryFilter->add("All");
    int count = categoryStore.count();
    for (int i = 0; i < count; i++)
        categoryFilter->add(categoryStore.at(i)->name);
    categoryFilter->value(0);
}

// Gives to-dos of vanished categories "Unassigned" and always saves. The list is rebuilt with
// the filter as it was; only then does the choice fall back to "All".
void TodoWindow::tabChanged() {
    auto change = beginChange();
    int count = todoStore.count();
    for (int i = 0; i < count; i++) {
        if (categoryStore.find(todoStore.at(i)->category) == nullptr)
            todoStore.at(i)->setCategory("Unassigned");
    }
    todoStore.save();
    fillTodoBrowser();
    fillCategoryChoice();
}

void TodoWindow::newTodo() {
    editedTodo_.reset();
    entryDialog.clear();
    entryDialog.setEditing(0);
    entryDialog.setToday();
    entryDialog.loadCategories();
    entryDialog.show();
}

void TodoWindow::editTodo() {
    TodoRecord* r = selectedTodo();
    if (r == nullptr)
        return;
    editedTodo_ = std::make_unique<TodoRecord>(*r);
    editedTodoAt_ = todoStore.indexOf(r);
    entryDialog.showDate({r->month, r->day, r->year});
    entryDialog.priorityChoice->value(r->priority);
    entryDialog.descriptionInput->value(shownDescription(*r).c_str());
    entryDialog.completeButton->value(r->completed);
    entryDialog.notesBuffer.remove(0, entryDialog.notesBuffer.length());
    entryDialog.notesBuffer.insert(0, r->notes());
    entryDialog.loadCategories();
    entryDialog.categoryChoice->value(0);
    selectByText(entryDialog.categoryChoice, r->category);
    entryDialog.updateWeekday();
    entryDialog.setEditing(1);
    entryDialog.show();
}

void TodoWindow::fillRecord(TodoRecord* record) {
    CalDate due = entryDialog.shownDate();
    record->month = due.month;
    record->day = due.day;
    record->year = due.year;
    record->priority = entryDialog.priorityChoice->value();
    record->completed = entryDialog.completeButton->value() != 0 ? 1 : 0;
    // In this order: each copy may end on the first byte of the next field.
    record->setCategory(selectedText(entryDialog.categoryChoice));
    record->setDescription(entryDialog.descriptionInput->value());
    // The whole text: the record cuts it to its field, never inside a character.
    char* notes = entryDialog.notesBuffer.text();
    record->setNotes(notes);
    std::free(notes);
}

void TodoWindow::saveTodo() {
    auto change = beginChange();
    if (entryDialog.editing() == 0) {
        auto* record = new TodoRecord;
        fillRecord(record);
        record->next = nullptr;
        todoStore.append(record);
    } else if (editedTodo_) {
        saveEditedTodo();
    }
    editedTodo_.reset();
    entryDialog.window->hide();
    todoStore.save();
    fillTodoBrowser();
}

// The edit goes over the to-do the dialog was opened on, found by what it held then. If another
// program changed or deleted it meanwhile, the edit is added beside its version: both are kept.
void TodoWindow::saveEditedTodo() {
    if (TodoRecord* r = todoStore.findLike(*editedTodo_, editedTodoAt_)) {
        fillRecord(r);
        return;
    }
    auto* record = new TodoRecord;
    fillRecord(record);
    record->next = nullptr;
    todoStore.append(record);
    std::fprintf(stderr,
                 "the to-do \"%.*s\" was changed or deleted by another program while it was "
                 "edited here; both versions are kept\n",
                 descriptionLength(*editedTodo_), editedTodo_->description);
}

void TodoWindow::cancelTodo() {
    editedTodo_.reset();
    entryDialog.window->hide();
}

// The question runs the event loop, in which the stores may be read again: the to-do is then
// found again by its content.
void TodoWindow::deleteTodo() {
    TodoRecord* r = selectedTodo();
    if (r == nullptr)
        return;
    TodoRecord doomed = *r;
    int at = todoStore.indexOf(r);
    if (!confirm("Do you really want to delete the To-Do Item?"))
        return;
    auto change = beginChange();
    if (TodoRecord* still = todoStore.findLike(doomed, at))
        todoStore.remove(still);
    else
        std::fprintf(stderr,
                     "the to-do \"%.*s\" was changed or deleted by another program before it "
                     "could be deleted here; that program's version stays\n",
                     descriptionLength(doomed), doomed.description);
    fillTodoBrowser();
    todoStore.save();
}

void TodoWindow::purgeTodos() {
    if (!confirm("Do you really want to purge all completed to-do records?"))
        return;
    auto change = beginChange();
    todoStore.purgeCompleted();
    todoStore.save();
    fillTodoBrowser();
}

void TodoWindow::fillCategoryBrowser() {
    categoryBrowser->clear();
    for (int i = 0; i < categoryStore.count(); i++) {
        CategoryRecord* r = categoryStore.at(i);
        // The list has no columns: only codes at the start of a name are read.
        char line[sizeof r->name + 2];
        std::snprintf(line, sizeof line, "%s", r->name);
        BrowserText::guard(line, sizeof line, 0);
        categoryBrowser->add(line, r);
    }
}

void TodoWindow::newCategory() {
    editedCategory_.reset();
    categoryDialog.clear();
    categoryDialog.setEditing(0);
    categoryDialog.show();
}

void TodoWindow::editCategory() {
    CategoryRecord* r = selectedRecord<CategoryRecord>(categoryBrowser);
    if (r == nullptr)
        return;
    editedCategory_ = r->name;
    editedCategoryAt_ = categoryStore.indexOf(r);
    categoryDialog.nameInput->value(r->name);
    categoryDialog.setEditing(1);
    categoryDialog.show();
}

void TodoWindow::saveCategory() {
    auto change = beginChange();
    if (categoryDialog.editing() == 0) {
        auto* record = new CategoryRecord;
        record->setName(categoryDialog.nameInput->value());
        categoryStore.append(record);
    } else if (editedCategory_) {
        saveEditedCategory();
    }
    editedCategory_.reset();
    categoryDialog.window->hide();
    categoryStore.save();
    fillCategoryBrowser();
}

// As for a to-do: a category renamed or deleted elsewhere meanwhile is kept, the new name added.
void TodoWindow::saveEditedCategory() {
    CategoryRecord old;
    old.setName(editedCategory_->c_str());
    if (CategoryRecord* r = categoryStore.findLike(old, editedCategoryAt_)) {
        r->setName(categoryDialog.nameInput->value());
        return;
    }
    auto* record = new CategoryRecord;
    record->setName(categoryDialog.nameInput->value());
    categoryStore.append(record);
    std::fprintf(stderr,
                 "the category \"%s\" was renamed or deleted by another program while it was "
                 "edited here; the new name is added beside it\n",
                 editedCategory_->c_str());
}

void TodoWindow::cancelCategory() {
    editedCategory_.reset();
    categoryDialog.window->hide();
}

// The question comes before the refusal of "Unassigned": the user answers, then is told no.
void TodoWindow::deleteCategory() {
    CategoryRecord* r = selectedRecord<CategoryRecord>(categoryBrowser);
    if (r == nullptr)
        return;
    CategoryRecord doomed = *r;
    int at = categoryStore.indexOf(r);
    if (!confirm("Do you really want to delete the category Item?"))
        return;
    if (std::strcmp(doomed.name, "Unassigned") == 0) {
        fl_alert("You can not delete the Unassigned category!");
        return;
    }
    auto change = beginChange();
    if (CategoryRecord* still = categoryStore.findLike(doomed, at))
        categoryStore.remove(still);
    fillCategoryBrowser();
    categoryStore.save();
}

void TodoWindow::followFiles() {
    Picked picked = pick();
    showReloaded(folder_.refresh(), picked);
}

std::unique_ptr<DataFolder::Change> TodoWindow::beginChange() {
    Picked picked = pick();
    auto change = std::make_unique<DataFolder::Change>(folder_);
    showReloaded(change->reloaded(), picked);
    return change;
}

// The notes come from the version of the file the list shows. When another program has changed
// it in place since, the list is read again first, as following the files would.
TodoRecord* TodoWindow::selectedTodo() {
    TodoRecord* r = selectedRecord<TodoRecord>(todoBrowser);
    if (r != nullptr && !r->readNotes()) {
        followFiles();
        r = selectedRecord<TodoRecord>(todoBrowser);
    }
    return r != nullptr && r->readNotes() ? r : nullptr;
}

TodoWindow::Picked TodoWindow::pick() const {
    Picked picked;
    if (auto* todo = selectedRecord<TodoRecord>(todoBrowser)) {
        picked.todo = std::make_unique<TodoRecord>(*todo);
        picked.todoAt = todoStore.indexOf(todo);
    }
    if (auto* category = selectedRecord<CategoryRecord>(categoryBrowser)) {
        picked.category = category->name;
        picked.categoryAt = categoryStore.indexOf(category);
    }
    if (categoryFilter->value() > 0)
        picked.filter = selectedText(categoryFilter);
    return picked;
}

// As a start-up would show the files, but the tab, "Show Completed", the filter and the
// selections stay where their category or to-do still exists.
void TodoWindow::showReloaded(const DataFolder::Reloaded& reloaded, const Picked& picked) {
    if (reloaded.categories) {
        fillCategoryBrowser();
        CategoryRecord old;
        old.setName(picked.category.c_str());
        if (picked.categoryAt >= 0)
            selectLine(categoryBrowser, categoryStore.findLike(old, picked.categoryAt));
        fillCategoryChoice();
        if (!picked.filter.empty())
            selectByText(categoryFilter, picked.filter.c_str());
    }
    if (!reloaded.any())
        return;
    fillTodoBrowser();
    if (picked.todo)
        selectLine(todoBrowser, todoStore.findLike(*picked.todo, picked.todoAt));
}
