// The category name dialog. Its buttons' callbacks are attached by the main window.
#include "category_dialog.h"

#include "byte_limit_input.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>

CategoryDialog::CategoryDialog() {
    window = new Fl_Double_Window(420, 100, "Category Edit");
    window->set_modal();
    window->user_data(this);
    nameInput = new ByteLimitInput(70, 5, 340, 25, "Category:", kNameMax);
    saveButton = new Fl_Button(255, 65, 65, 25, "&Save");
    cancelButton = new Fl_Button(330, 65, 75, 25, "&Cancel");
    window->end();
    nameInput->maximum_size(kNameMax);
}

void CategoryDialog::show() {
    window->show();
}

void CategoryDialog::clear() {
    nameInput->value("");
}
