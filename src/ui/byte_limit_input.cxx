// The byte-limited input: keys are edited by Fl_Input and undone only when they grew the text
// past the limit; pastes are taken in hand and keep what fits.
#include "byte_limit_input.h"

#include "text_cursor.h"
#include "utf8_text.h"

#include <FL/Fl.H>

#include <cctype>
#include <cstdlib>
#include <string>

ByteLimitInput::ByteLimitInput(int x, int y, int w, int h, const char* label, int maxBytes)
    : Fl_Input(x, y, w, h, label), maxBytes_(maxBytes) {}

int ByteLimitInput::handle(int event) {
    if (event == FL_PASTE)
        return paste();
    if (event != FL_KEYBOARD)
        return Fl_Input::handle(event);
    std::string before(value(), static_cast<std::size_t>(size()));
    int cursor = TextCursor::at(*this);
    int anchor = mark();
    int result = Fl_Input::handle(event);
    if (size() > maxBytes_ && size() > static_cast<int>(before.size())) {
        value(before.data(), static_cast<int>(before.size()));
        TextCursor::place(*this, cursor, anchor);
    }
    return result;
}

int ByteLimitInput::room() const {
    int kept = size() - std::abs(TextCursor::at(*this) - mark());
    return kept < maxBytes_ ? maxBytes_ - kept : 0;
}

// The pasted bytes come with their length and need not end in a zero.
int ByteLimitInput::paste() {
    const char* text = Fl::event_text();
    std::size_t length = text != nullptr ? static_cast<std::size_t>(Fl::event_length()) : 0;
    // Fl_Input drops trailing white space from a paste into a one-line field; so does this.
    while (length > 0 && std::isspace(static_cast<unsigned char>(text[length - 1])))
        length--;
    length = Utf8Text::fitLength(text, length, static_cast<std::size_t>(room()));
    if (length > 0)
        replace(TextCursor::at(*this), mark(), text, static_cast<int>(length));
    return 1;
}
