// The cursor of a text input and the other end of its selection. FLTK 1.4 calls them
// insert_position(), keeps position(x, y) for a widget's place on screen, and deprecates the
// old one-argument forms; 1.3 has only those.
#ifndef PINDLE_TEXT_CURSOR_H
#define PINDLE_TEXT_CURSOR_H

#include <FL/Enumerations.H>
#include <FL/Fl_Input_.H>

namespace TextCursor {

inline int at(const Fl_Input_& input) {
#if FL_API_VERSION >= 10400
    return input.insert_position();
#else
    return input.position();
#endif
}

inline void place(Fl_Input_& input, int cursor, int mark) {
#if FL_API_VERSION >= 10400
    input.insert_position(cursor, mark);
#else
    input.position(cursor, mark);
#endif
}

} // namespace TextCursor

#endif
