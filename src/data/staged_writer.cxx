// The staged file writer behind the stores' saves.
#include "staged_writer.h"

#include <algorithm>
#include <unistd.h>

namespace {
// A few records' worth: small enough to stay in cache between encoding and writing.
constexpr std::size_t kStageSize = 256 * 1024;
} // namespace

unsigned char* StagedWriter::next(std::size_t size) {
    if (failed_)
        return nullptr;
    if (used_ + size > size_) {
        if (!flush())
            return nullptr;
        // Taken at the first byte and never cleared, so a save that writes nothing costs nothing.
        if (size > size_) {
            size_ = std::max(size, kStageSize);
            stage_.reset(new unsigned char[size_]);
        }
    }
    unsigned char* room = stage_.get() + used_;
    used_ += size;
    return room;
}

bool StagedWriter::finish() {
    return !failed_ && flush();
}

// Loops over short writes, as fwrite does; any error fails the save. The bytes go out in order
// from the start, so write() serves files, devices and pipes alike.
bool StagedWriter::flush() {
    const unsigned char* data = stage_.get();
    for (std::size_t left = used_; left > 0;) {
        ssize_t n = write(fd_, data, left);
        if (n <= 0) {
            failed_ = true;
            return false;
        }
        data += n;
        left -= static_cast<std::size_t>(n);
    }
    used_ = 0;
    return true;
}
