// Byte-level helpers for the fixed-size records of the data files.
#include "field_codec.h"

#include "utf8_text.h"

#include <cstdint>
#include <cstring>

namespace FieldCodec {

void putInt32(unsigned char* out, int value) {
    auto bits = static_cast<std::uint32_t>(value);
    out[0] = static_cast<unsigned char>(bits >> 24);
    out[1] = static_cast<unsigned char>(bits >> 16);
    out[2] = static_cast<unsigned char>(bits >> 8);
    out[3] = static_cast<unsigned char>(bits);
}

int getInt32(const unsigned char* in) {
    std::uint32_t bits = (std::uint32_t{in[0]} << 24) | (std::uint32_t{in[1]} << 16) |
                         (std::uint32_t{in[2]} << 8) | std::uint32_t{in[3]};
    return static_cast<int>(bits);
}

void copyBounded(char* dest, const char* text, const char* limit) {
    if (dest >= limit)
        return;
    std::size_t room = static_cast<std::size_t>(limit - dest) - 1;
    std::size_t length = Utf8Text::fitLength(text, strnlen(text, room + 1), room);
    std::memmove(dest, text, length);
    dest[length] = '\0';
}

void putText(unsigned char* out, const char* field, std::size_t size) {
    std::size_t used = putSignificant(out, field, size);
    std::memset(out + used, 0, size - used);
}

std::size_t putSignificant(unsigned char* out, const char* field, std::size_t size) {
    const char* end = static_cast<const char*>(std::memchr(field, 0, size));
    std::size_t used = end != nullptr ? static_cast<std::size_t>(end - field) + 1 : size;
    std::memcpy(out, field, used);
    return used;
}

// Zero at the start and each byte equal to the next: memcmp does the scan at full speed.
bool isZero(const unsigned char* bytes, std::size_t size) {
    return size == 0 || (bytes[0] == 0 && std::memcmp(bytes, bytes + 1, size - 1) == 0);
}

bool isPadded(const unsigned char* field, std::size_t size) {
    const auto* end = static_cast<const unsigned char*>(std::memchr(field, 0, size));
    return end == nullptr || isZero(end, size - static_cast<std::size_t>(end - field));
}

void putLink(unsigned char* out, bool last) {
    putInt32(out, last ? 0 : 1);
}

} // namespace FieldCodec
