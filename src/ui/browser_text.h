// User text placed into a browser line, where a column that starts with "@" is read as format
// codes. The codes are honoured, except those the toolkit cannot survive.
#ifndef PINDLE_BROWSER_TEXT_H
#define PINDLE_BROWSER_TEXT_H

#include <cstddef>

namespace BrowserText {

// True when the format codes at the start of `column` ask for a font that does not exist or a
// size that cannot be opened: drawing such a line crashes the toolkit or ends the program.
bool hasHarmfulCodes(const char* column);

// Appends `text` to the line of `size` characters, cutting what does not fit. Where a column
// starts (at the beginning when `columnStart`, and after every tab) with harmful codes, "@."
// goes first, so that column is shown as it was typed. Other codes keep their effect.
void append(char* line, std::size_t size, const char* text, bool columnStart);

} // namespace BrowserText

#endif
