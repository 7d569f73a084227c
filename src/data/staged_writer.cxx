// The staged file writer behind the stores' saves.
#include "staged_writer.h"

#include <algorithm>
#include <unistd.h>

namespace {
// A few records' worth: small enough to stay in cache between encoding and writing.
constexpr std::size_t kStageSize = 256 * 1024;
} // namespace

// A pipe has no offsets: its bytes go out with write() in the order they come.
StagedWriter::StagedWriter(int fd)
    : fd_(fd), seekable_(lseek(fd, 0, SEEK_CUR) >= 0), size_(0), used_(0), offset_(0),
      failed_(false) {}

unsigned char* StagedWriter::next(std::size_t size) {
    return at(offset_ + used_, size);
}

unsigned char* StagedWriter::at(std::uint64_t offset, std::size_t size) {
    if (failed_)
        return nullptr;
    bool adjacent = offset == offset_ + used_;
    if (!adjacent || used_ + size > size_) {
        if (!flush())
            return nullptr;
        offset_ = offset;
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

// Loops over short writes, as fwrite does; any error fails the save.
bool StagedWriter::flush() {
    const unsigned char* data = stage_.get();
    std::size_t left = used_;
    while (left > 0) {
        auto at = static_cast<off_t>(offset_ + (used_ - left));
        ssize_t n = seekable_ ? pwrite(fd_, data, left, at) : write(fd_, data, left);
        if (n <= 0) {
            failed_ = true;
            return false;
        }
        data += n;
        left -= static_cast<std::size_t>(n);
    }
    offset_ += used_;
    used_ = 0;
    return true;
}
