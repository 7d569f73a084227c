// Cutting UTF-8 text to a number of bytes without splitting a character.
#ifndef PINDLE_UTF8_CUT_H
#define PINDLE_UTF8_CUT_H

#include <cstddef>

namespace Utf8Cut {

// The length of `text` cut to at most `limit` bytes: when the cut would fall inside a
// character, that whole character is left out.
inline std::size_t fitting(const char* text, std::size_t length, std::size_t limit) {
    if (length <= limit)
        return length;
    while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0) == 0x80)
        limit--;
    return limit;
}

} // namespace Utf8Cut

#endif
