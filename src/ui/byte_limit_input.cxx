// The byte-limited input: lets Fl_Input edit as usual, and undoes an insertion that would pass
// the limit. A typed character that does not fit is refused; a paste keeps what fits.
#include "byte_limit_input.h"

#include <FL/Fl.H>

#include <cctype>
#include <string>

ByteLimitInput::ByteLimitInput(int x, int y, int w, int h, const char* label, int maxBytes)
    : Fl_Input(x, y, w, h, label), maxBytes_(maxBytes) {}

int ByteLimitInput::handle(int event) {
    if (event != FL_KEYBOARD && event != FL_PASTE)
        return Fl_Input::handle(event);
    std::string before(value(), static_cast<std::size_t>(size()));
    int cursor = position();
    int anchor = mark();
    int result = Fl_Input::handle(event);
    if (size() > maxBytes_) {
        value(before.data(), static_cast<int>(before.size()));
        position(cursor, anchor);
        if (event == FL_PASTE)
            pasteWhatFits(cursor, anchor);
    }
    return result;
}

void ByteLimitInput::pasteWhatFits(int position, int mark) {
    const char* text = Fl::event_text();
    int length = Fl::event_length();
    // Fl_Input drops trailing white space from a paste into a one-line field; so do we.
    while (length > 0 && std::isspace(static_cast<unsigned char>(text[length - 1])))
        length--;
    int selected = position > mark ? position - mark : mark - position;
    int room = maxBytes_ - (size() - selected);
    if (length > room)
        length = room;
    // Never cut a UTF-8 sequence in two: drop the continuation bytes of a split character.
    while (length > 0 && length < Fl::event_length() &&
           (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
        length--;
    if (length > 0)
        replace(position, mark, text, length);
}
