// The notes editor: the toolkit's text editor with pastes taken in hand. The toolkit's own
// paste measures the pasted text with strlen, but pasted bytes come with their length and need
// not end in a zero; and a huge paste is more than the notes can keep or the toolkit can draw.
#ifndef PINDLE_NOTES_EDITOR_H
#define PINDLE_NOTES_EDITOR_H

#include <FL/Fl_Text_Editor.H>

class NotesEditor : public Fl_Text_Editor {
public:
    // Each paste brings in at most `pasteMax` bytes: no byte after them could ever be saved.
    NotesEditor(int x, int y, int w, int h, const char* label, int pasteMax);
    int handle(int event) override;

    // No paste goes into notes of this many bytes or more: lines of some 270,000 characters
    // make the X server refuse the drawing, and the program ends.
    static constexpr int kMostHeld = 200000;

private:
    int paste();

    int pasteMax_;
};

#endif
