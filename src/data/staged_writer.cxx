// The staged file writer behind the stores' saves.
#include "staged_writer.h"

#include <unistd.h>

namespace {
// A few records' worth: small enough to stay in cache between encoding and writing.
constexpr std::size_t kStageSize = 256 * 1024;
} // namespace

StagedWriter::StagedWriter(int fd) : fd_(fd), stage_(kStageSize), used_(0), failed_(false) {}

unsigned char* StagedWriter::next(std::size_t size) {
    if (failed_)
        return nullptr;
    if (used_ + size > stage_.size()) {
        if (!flush())
            return nullptr;
        if (size > stage_.size())
            stage_.resize(size);
    }
    unsigned char* room = stage_.data() + used_;
    used_ += size;
    return room;
}

bool StagedWriter::finish() {
    return !failed_ && flush();
}

// Loops over short writes, as fwrite does; any error fails the save.
bool StagedWriter::flush() {
    const unsigned char* data = stage_.data();
    std::size_t left = used_;
    while (left > 0) {
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
