// The modal "Category Edit" window in which one category name is typed. It only shows itself
// and remembers whether it adds or renames; the main window's handlers do the rest.
#ifndef PINDLE_CATEGORY_DIALOG_H
#define PINDLE_CATEGORY_DIALOG_H

class Fl_Button;
class Fl_Double_Window;
class Fl_Input;

class CategoryDialog {
public:
    // Longest name in bytes: the record's name field keeps room for it and its terminator.
    static constexpr int kNameMax = 50;

    CategoryDialog();
    // Owns one window of the toolkit's for the whole run: never copied.
    CategoryDialog(const CategoryDialog&) = delete;
    CategoryDialog& operator=(const CategoryDialog&) = delete;
    void show();
    void clear();
    // 0: Save appends a new category; 1: Save renames the selected one.
    void setEditing(int mode) { editing_ = mode; }
    int editing() const { return editing_; }

    Fl_Double_Window* window;
    Fl_Input* nameInput;
    Fl_Button* saveButton;
    Fl_Button* cancelButton;

private:
    int editing_ = 0;
};

#endif
