// The About window and its text.
#include "about_dialog.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Output.H>

namespace {
const char kAboutText[] = "Pindle ToDo Version 1.5\n"
                          "Released 3/25/2005\n"
                          "A to-do list kept in two small files.\n"
                          "Written in C++ with the FLTK toolkit.\n"
                          "Free software under the MIT licence.";
}

AboutDialog::AboutDialog() {
    window = new Fl_Double_Window(295, 235, "About Pindle ToDo");
    window->user_data(this);
    okButton = new Fl_Button(115, 200, 55, 25, "Ok");
    okButton->callback(onOk);
    aboutText = new Fl_Output(5, 10, 285, 185);
    aboutText->type(FL_MULTILINE_OUTPUT);
    window->set_modal();
    window->end();
    aboutText->value(kAboutText);
}

void AboutDialog::show() {
    window->show();
}

void AboutDialog::close() {
    window->hide();
}

void AboutDialog::onOk(Fl_Widget* button, void*) {
    static_cast<AboutDialog*>(button->parent()->user_data())->close();
}
