// A one-line text input that grows no longer than a number of bytes, whether typed or pasted.
// FLTK's own maximum_size counts UTF-8 characters, but the record fields it feeds hold bytes.
// A text already longer (a description running on into the notes) can still be shortened,
// and the cursor moved and text selected in it, whatever its length.
#ifndef PINDLE_BYTE_LIMIT_INPUT_H
#define PINDLE_BYTE_LIMIT_INPUT_H

#include <FL/Fl_Input.H>

class ByteLimitInput : public Fl_Input {
public:
    ByteLimitInput(int x, int y, int w, int h, const char* label, int maxBytes);
    int handle(int event) override;

private:
    int paste();
    // Bytes that may replace the selection within the limit.
    int room() const;

    int maxBytes_;
};

#endif
