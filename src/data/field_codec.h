// Byte-level helpers for the fixed-size records: big-endian integers written byte by byte
// whatever the host, bounded text copies, and string fields written with zeros after the end.
#ifndef PINDLE_FIELD_CODEC_H
#define PINDLE_FIELD_CODEC_H

#include <cstddef>

namespace FieldCodec {

void putInt32(unsigned char* out, int value);
int getInt32(const unsigned char* in);

// Copies text into dest and terminates it, never touching limit or anything past it (limit is
// one past the last byte the copy may use). Text that does not fit is cut between characters,
// as Utf8Text::fitLength says.
void copyBounded(char* dest, const char* text, const char* limit);

// Writes a string field of `size` bytes: its bytes up to and including the terminator, then
// zeros. A field without a terminator is written whole.
void putText(unsigned char* out, const char* field, std::size_t size);

// Copies only the significant bytes of a string field (what putText writes before its zeros)
// and returns how many there are.
std::size_t putSignificant(unsigned char* out, const char* field, std::size_t size);

// True when every byte of the `size` bytes at `bytes` is zero.
bool isZero(const unsigned char* bytes, std::size_t size);

// True when a string field is as putText writes it: nothing but zeros after its first NUL (a
// field without one is written whole, so it qualifies too).
bool isPadded(const unsigned char* field, std::size_t size);

// The slot that ends every record: zero in the last one, one in every other. Readers ignore it.
constexpr std::size_t kLinkSize = 4;
void putLink(unsigned char* out, bool last);

} // namespace FieldCodec

#endif
