// The staged, hole-leaving file writer behind the stores' saves.
#include "sparse_writer.h"

#include <algorithm>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {
// A few records' worth: small enough to stay in cache between encoding and writing.
constexpr std::size_t kStageSize = 256 * 1024;
constexpr std::size_t kDefaultPage = 4096;

bool allZero(const unsigned char* data, std::size_t length) {
    return length == 0 || (data[0] == 0 && std::memcmp(data, data + 1, length - 1) == 0);
}
} // namespace

SparseWriter::SparseWriter(int fd)
    : fd_(fd), sparse_(false), page_(kDefaultPage), stage_(kStageSize), used_(0), stageOffset_(0),
      end_(0), failed_(false) {
    struct stat info {};
    if (fstat(fd, &info) == 0 && S_ISREG(info.st_mode)) {
        sparse_ = true;
        // Holes come in whole file-system blocks; a smaller unit would only cost more calls.
        if (info.st_blksize > 0 && kStageSize % static_cast<std::size_t>(info.st_blksize) == 0)
            page_ = static_cast<std::size_t>(info.st_blksize);
    }
}

unsigned char* SparseWriter::next(std::size_t size) {
    if (failed_)
        return nullptr;
    if (used_ + size > stage_.size()) {
        // Only whole pages leave a sparse stage: the rest may still get non-zero bytes.
        std::size_t ready = sparse_ ? used_ - used_ % page_ : used_;
        if (!flush(ready, false))
            return nullptr;
        if (used_ + size > stage_.size())
            stage_.resize(used_ + size);
    }
    unsigned char* room = stage_.data() + used_;
    used_ += size;
    return room;
}

bool SparseWriter::finish() {
    return !failed_ && flush(used_, true);
}

// Sends the first `length` staged bytes to the file and moves the rest to the front.
bool SparseWriter::flush(std::size_t length, bool final) {
    bool written =
        sparse_ ? writeSparse(length, final) : writeRun(stage_.data(), length, stageOffset_);
    if (!written) {
        failed_ = true;
        return false;
    }
    std::memmove(stage_.data(), stage_.data() + length, used_ - length);
    used_ -= length;
    stageOffset_ += static_cast<off_t>(length);
    return true;
}

// Writes each run of pages that hold a non-zero byte; a final flush also writes the last page.
bool SparseWriter::writeSparse(std::size_t length, bool final) {
    std::size_t runStart = 0;
    for (std::size_t at = 0; at < length; at += page_) {
        std::size_t size = std::min(page_, length - at);
        bool keep = !allZero(stage_.data() + at, size) || (final && at + size == length);
        if (keep)
            continue;
        if (runStart < at &&
            !writeRun(stage_.data() + runStart, at - runStart, stageOffset_ + runStart))
            return false;
        runStart = at + size;
    }
    return runStart >= length ||
           writeRun(stage_.data() + runStart, length - runStart, stageOffset_ + runStart);
}

bool SparseWriter::writeRun(const unsigned char* data, std::size_t length, off_t offset) {
    if (writeAll(data, length, offset))
        return true;
    if (offset > end_)
        fillHoleTo(offset);
    return false;
}

// Loops over short writes, as fwrite does; any error fails the whole run. Without holes every
// write follows the last, so plain write() serves files that cannot seek.
bool SparseWriter::writeAll(const unsigned char* data, std::size_t length, off_t offset) {
    while (length > 0) {
        ssize_t n = sparse_ ? pwrite(fd_, data, length, offset) : write(fd_, data, length);
        if (n <= 0)
            return false;
        data += n;
        length -= static_cast<std::size_t>(n);
        offset += n;
        end_ = offset;
    }
    return true;
}

// After a write past a hole has failed, fills the hole with real zeros until the file refuses
// them too, so that a failed save stops where writing every byte in order would have stopped.
void SparseWriter::fillHoleTo(off_t offset) {
    static const unsigned char zeros[64 * 1024] = {};
    while (end_ < offset) {
        auto size = static_cast<std::size_t>(std::min<off_t>(sizeof zeros, offset - end_));
        if (!writeAll(zeros, size, end_))
            return;
    }
}
