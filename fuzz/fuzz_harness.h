// What the file-loader fuzz targets share: a private working directory for the data files, file
// helpers, and the file's view of a text field as the bytes that matter in it.
#ifndef PINDLE_FUZZ_HARNESS_H
#define PINDLE_FUZZ_HARNESS_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace FuzzHarness {

// Makes a fresh directory under $TMPDIR (or /tmp) and moves into it, since the stores use the
// current directory; it is removed when the process exits normally. As libFuzzer reads and writes
// its files after this, the folders and inputs on the command line must be absolute paths (checked
// here), and so must -artifact_prefix, or crash files land in the private directory.
void enterPrivateDir(int argc, char** argv);

void writeFile(const char* name, const std::uint8_t* data, std::size_t size);
std::string readFile(const char* name);

// Reports `what` on stderr and aborts, so that libFuzzer records the input as a finding.
void require(bool ok, const char* what);

std::int32_t readBigEndian(const unsigned char* bytes);

// A text field's significant bytes: up to and including its first NUL, or all of it when it
// has none. What follows a terminator is not part of the field.
std::string significant(const char* field, std::size_t size);

// The significant bytes a loader must keep from a field of the file. With `mustEnd`, a field
// the file left unterminated keeps all but its last byte, and the terminator takes that place.
std::string loadedField(const unsigned char* bytes, std::size_t size, bool mustEnd);

} // namespace FuzzHarness

#endif
