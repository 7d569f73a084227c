// The modal About window: the program's name, version and release date, and credit lines.
// Built hidden at start-up and reused; it holds no state and touches no data.
#ifndef PINDLE_ABOUT_DIALOG_H
#define PINDLE_ABOUT_DIALOG_H

class Fl_Button;
class Fl_Double_Window;
class Fl_Output;
class Fl_Widget;

class AboutDialog {
public:
    AboutDialog();
    // Owns one window of the toolkit's for the whole run: never copied.
    AboutDialog(const AboutDialog&) = delete;
    AboutDialog& operator=(const AboutDialog&) = delete;
    void show();
    void close();

    Fl_Double_Window* window;
    Fl_Button* okButton;
    Fl_Output* aboutText;

private:
    static void onOk(Fl_Widget* button, void*);
};

#endif
