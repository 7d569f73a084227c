// Browser lines and their format codes. Fl_Browser reads "@" codes at the start of each column
// ("@" and a letter, some with a number, until "@." or plain text) and obeys them, which a
// line keeps, except for codes the toolkit cannot survive. Found on FLTK 1.3.8 with Xft by
// drawing each value: a font from FL_FREE_FONT on (16 and up) reads past the toolkit's font
// table and crashes, as do fonts below zero; a size above 2000 stalls every redraw for seconds
// (glyphs are drawn size by size), from about 8000 the X server rejects the glyphs, from about
// 15000 the program freezes, and from 65536 the toolkit finds no font and ends the program.
#ifndef PINDLE_BROWSER_TEXT_H
#define PINDLE_BROWSER_TEXT_H

#include <cstddef>

namespace BrowserText {

// The largest size a line may ask for; 0 and below draw at a size the toolkit picks.
constexpr int kLargestSize = 2000;

// Puts "@." in front of each column of `line` whose codes would break the toolkit, so that
// column is shown as typed. A column starts the line and follows each of its first
// `splitTabs` tabs: a browser splits at one tab per non-zero column width, and at none without
// column widths. The line, of at most `size` characters with its terminator, is cut to keep
// that size.
void guard(char* line, std::size_t size, int splitTabs);

} // namespace BrowserText

#endif
