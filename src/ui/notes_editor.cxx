// The notes editor's paste, done as the toolkit's own but on the bytes the paste brought.
#include "notes_editor.h"

#include "utf8_text.h"

#include <FL/Fl.H>
#include <FL/fl_ask.H>

#include <string>

NotesEditor::NotesEditor(int x, int y, int w, int h, const char* label, int pasteMax)
    : Fl_Text_Editor(x, y, w, h, label), pasteMax_(pasteMax) {}

int NotesEditor::handle(int event) {
    return event == FL_PASTE ? paste() : Fl_Text_Editor::handle(event);
}

int NotesEditor::paste() {
    const char* text = Fl::event_text();
    if (text == nullptr || buffer()->length() >= kMostHeld) {
        fl_beep();
        return 1;
    }
    std::string pasted(text, static_cast<std::size_t>(Fl::event_length()));
    pasted.resize(Utf8Text::fitLength(pasted.data(), pasted.size(), pasteMax_));
    buffer()->remove_selection();
    if (insert_mode())
        insert(pasted.c_str());
    else
        overstrike(pasted.c_str());
    show_insert_position();
    set_changed();
    if (when() & FL_WHEN_CHANGED)
        do_callback();
    return 1;
}
