// UTF-8 as the program meets it: texts are kept as the bytes typed or pasted, UTF-8 from the
// desktop, but older files were often written in Latin-1. The one table of well-formed UTF-8
// sequences (RFC 3629) behind every cut of a text to its field and every conversion to valid
// UTF-8: bytes outside well-formed sequences count as characters of their own, read as Latin-1.
#ifndef PINDLE_UTF8_TEXT_H
#define PINDLE_UTF8_TEXT_H

#include <cstddef>
#include <string>

namespace Utf8Text {

// The length of the well-formed sequence starting at `bytes`, or 0 when there is none. Overlong
// forms, surrogates and code points past U+10FFFF are not well-formed.
std::size_t sequenceLength(const unsigned char* bytes, std::size_t available);

inline bool isContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

// How many of the `length` bytes of `text` fit in `room` bytes: all of them if they fit, else
// the longest start that does not end inside a well-formed sequence.
std::size_t fitLength(const char* text, std::size_t length, std::size_t room);

// The first `size` bytes of `bytes` as valid UTF-8: well-formed sequences pass through, every
// other byte is read as Latin-1.
std::string fromBytes(const char* bytes, std::size_t size);

// `text` as valid UTF-8, then cut to at most `room` bytes without splitting a character.
std::string fit(const std::string& text, std::size_t room);

} // namespace Utf8Text

#endif
