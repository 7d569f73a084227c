// The sync's own files, its state and its settings, written whole: to a temporary file beside
// the old one, made durable, then renamed over it, so that a crash leaves the old file or the
// new, never a part. Readable by the owner only, as they say where the user's tasks live.
#ifndef PINDLE_PRIVATE_FILE_H
#define PINDLE_PRIVATE_FILE_H

#include <string>

namespace PrivateFile {

// False, with the reason, when the file could not be written; nothing is left half then.
bool write(const std::string& path, const std::string& text, std::string& error);

} // namespace PrivateFile

#endif
