// A one-line text input that refuses text beyond a number of bytes, whether typed or pasted.
// FLTK's own maximum_size counts UTF-8 characters, but the record fields it feeds hold bytes.
#ifndef PINDLE_BYTE_LIMIT_INPUT_H
#define PINDLE_BYTE_LIMIT_INPUT_H

#include <FL/Fl_Input.H>

class ByteLimitInput : public Fl_Input {
public:
    ByteLimitInput(int x, int y, int w, int h, const char* label, int maxBytes);
    int handle(int event) override;

private:
    void pasteWhatFits(int position, int mark);

    int maxBytes_;
};

#endif
