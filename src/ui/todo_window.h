// The main window: the top strip, the to-do tab and the category tab, and every handler that
// ties those widgets and the two edit dialogs to the stores. It follows the data files: what
// another program writes there is shown within a second, and each change a person makes is
// applied to the files as they are at that moment, under the folder's lock.
#ifndef PINDLE_TODO_WINDOW_H
#define PINDLE_TODO_WINDOW_H

#include "data_folder.h"
#include "folder_watch.h"

#include <memory>
#include <optional>
#include <string>

class Fl_Browser;
class Fl_Button;
class Fl_Check_Button;
class Fl_Choice;
class Fl_Double_Window;
class Fl_Group;
class Fl_Output;
class Fl_Tabs;
class Fl_Widget;
struct TodoRecord;

class TodoWindow {
public:
    // Builds and shows the window, wires the dialogs' Save and Cancel buttons, fills the lists.
    TodoWindow();
    // Owns one window of the toolkit's for the whole run: never copied.
    TodoWindow(const TodoWindow&) = delete;
    TodoWindow& operator=(const TodoWindow&) = delete;

    // To-do tab.
    void fillTodoBrowser();
    void showToday();
    void tabChanged();
    void newTodo();
    void editTodo();
    void saveTodo();
    void cancelTodo();
    void deleteTodo();
    void purgeTodos();
    void fillCategoryChoice();

    // Category tab.
    void fillCategoryBrowser();
    void newCategory();
    void editCategory();
    void saveCategory();
    void cancelCategory();
    void deleteCategory();

    // Reads again whatever another program changed in the data files and shows it, keeping
    // the tab, the filter and the selections where their to-do or category still exists.
    void followFiles();

    Fl_Double_Window* window;
    Fl_Check_Button* showCompletedButton;
    Fl_Output* todayOutput;
    Fl_Button* purgeButton;
    Fl_Button* aboutButton;
    Fl_Tabs* tabs;
    Fl_Group* todoGroup;
    Fl_Browser* todoBrowser;
    Fl_Button* newTodoButton;
    Fl_Button* deleteTodoButton;
    Fl_Button* editTodoButton;
    Fl_Choice* categoryFilter;
    Fl_Group* categoryGroup;
    Fl_Browser* categoryBrowser;
    Fl_Button* newCategoryButton;
    Fl_Button* editCategoryButton;
    Fl_Button* deleteCategoryButton;

private:
    // What the person has picked in the window, by content and position, so that it can be
    // found again once the stores have read their files anew.
    struct Picked {
        std::unique_ptr<TodoRecord> todo;
        int todoAt = -1;
        std::string category;
        int categoryAt = -1;
        std::string filter;
    };

    Picked pick() const;
    // The selected to-do with its notes read, or null.
    TodoRecord* selectedTodo();
    void showReloaded(const DataFolder::Reloaded& reloaded, const Picked& picked);
    // The folder locked for one change, with whatever another program changed shown first.
    std::unique_ptr<DataFolder::Change> beginChange();
    void saveEditedTodo();
    void saveEditedCategory();

    void buildTopStrip();
    void buildTodoTab();
    void buildCategoryTab();
    void wireDialogs();
    void fillRecord(TodoRecord* record);

    // Widgets of the main window find it through their window's user data; the dialogs'
    // buttons carry it as their own user data.
    template <void (TodoWindow::*Handler)()> static void fromWindow(Fl_Widget* w, void*);
    template <void (TodoWindow::*Handler)()> static void fromUserData(Fl_Widget*, void* self);
    static void showAbout(Fl_Widget*, void*);
    static void filesChanged(void* self);

    DataFolder folder_;
    FolderWatch watch_;
    // The to-do the entry dialog was opened on by Edit, as it was then, and where it stood;
    // null when the dialog is not editing one.
    std::unique_ptr<TodoRecord> editedTodo_;
    int editedTodoAt_;
    // Likewise the name the category dialog was opened on by Edit.
    std::optional<std::string> editedCategory_;
    int editedCategoryAt_;
};

#endif
