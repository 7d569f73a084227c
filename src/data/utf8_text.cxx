// Validation of UTF-8 sequences, cuts between characters, and the Latin-1 fallback for bytes
// outside well-formed sequences.
#include "utf8_text.h"

namespace Utf8Text {

namespace {

// The allowed range of the second byte depends on the first (RFC 3629, section 4): it is what
// rules out overlong forms, surrogates and values past U+10FFFF.
bool secondByteFits(unsigned char lead, unsigned char second) {
    if (lead == 0xE0)
        return second >= 0xA0 && second <= 0xBF;
    if (lead == 0xED)
        return second >= 0x80 && second <= 0x9F;
    if (lead == 0xF0)
        return second >= 0x90 && second <= 0xBF;
    if (lead == 0xF4)
        return second >= 0x80 && second <= 0x8F;
    return isContinuation(second);
}

std::size_t expectedLength(unsigned char lead) {
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return 2;
    if (lead >= 0xE0 && lead <= 0xEF)
        return 3;
    if (lead >= 0xF0 && lead <= 0xF4)
        return 4;
    return 0;
}

void appendLatin1(std::string& out, unsigned char byte) {
    out += static_cast<char>(0xC0 | (byte >> 6));
    out += static_cast<char>(0x80 | (byte & 0x3F));
}

} // namespace

std::size_t sequenceLength(const unsigned char* bytes, std::size_t available) {
    std::size_t length = expectedLength(bytes[0]);
    if (length == 0 || length > available)
        return 0;
    if (length > 1 && !secondByteFits(bytes[0], bytes[1]))
        return 0;
    for (std::size_t i = 2; i < length; i++) {
        if (!isContinuation(bytes[i]))
            return 0;
    }
    return length;
}

std::size_t fitLength(const char* text, std::size_t length, std::size_t room) {
    if (length <= room)
        return length;
    const auto* bytes = reinterpret_cast<const unsigned char*>(text);
    if (!isContinuation(bytes[room]))
        return room;
    // The first byte left out may continue a character that starts before the cut, at most
    // three bytes back: then the cut goes before that character.
    for (std::size_t back = 1; back <= 3 && back <= room; back++) {
        if (!isContinuation(bytes[room - back]))
            return sequenceLength(bytes + room - back, length - room + back) > back ? room - back
                                                                                    : room;
    }
    return room;
}

std::string fromBytes(const char* bytes, std::size_t size) {
    const auto* in = reinterpret_cast<const unsigned char*>(bytes);
    std::string out;
    out.reserve(size);
    std::size_t i = 0;
    while (i < size) {
        std::size_t length = sequenceLength(in + i, size - i);
        if (length == 0) {
            appendLatin1(out, in[i]);
            i++;
            continue;
        }
        out.append(bytes + i, length);
        i += length;
    }
    return out;
}

std::string fit(const std::string& text, std::size_t room) {
    std::string valid = fromBytes(text.data(), text.size());
    valid.resize(fitLength(valid.data(), valid.size(), room));
    return valid;
}

} // namespace Utf8Text
