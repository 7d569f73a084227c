// Turning the bytes a record holds into valid UTF-8 for the export formats: well-formed UTF-8
// passes through, every other byte is read as Latin-1 (older files were often written that way).
#ifndef PINDLE_UTF8_TEXT_H
#define PINDLE_UTF8_TEXT_H

#include <cstddef>
#include <string>

namespace Utf8Text {

// The first `size` bytes of `bytes` as UTF-8. Overlong forms, surrogates and code points past
// U+10FFFF are not well-formed, so their bytes are each taken as Latin-1 too.
std::string fromBytes(const char* bytes, std::size_t size);

// The length of the well-formed sequence starting at `bytes`, or 0 when there is none.
std::size_t sequenceLength(const unsigned char* bytes, std::size_t available);

inline bool isContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

} // namespace Utf8Text

#endif
