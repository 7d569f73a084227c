// Writes a new file front to back through a staging buffer. In a regular file, pages holding
// only zeros are skipped and left as holes, so a save costs what the records hold, not their size.
#ifndef PINDLE_SPARSE_WRITER_H
#define PINDLE_SPARSE_WRITER_H

#include <cstddef>
#include <sys/types.h>
#include <vector>

class SparseWriter {
public:
    // `fd` is open for writing on an empty file. Anything but a regular file (a device, a pipe)
    // cannot hold holes and gets every byte, in order.
    explicit SparseWriter(int fd);

    // Room for the next `size` bytes of the file, valid until the next call; null once a write
    // has failed.
    unsigned char* next(std::size_t size);

    // Writes what is still staged, the file's last byte always included, so the length is set
    // by a write whose failure shows. False if this or any earlier write failed.
    bool finish();

private:
    bool flush(std::size_t length, bool final);
    bool writeSparse(std::size_t length, bool final);
    bool writeRun(const unsigned char* data, std::size_t length, off_t offset);
    bool writeAll(const unsigned char* data, std::size_t length, off_t offset);
    void fillHoleTo(off_t offset);

    int fd_;
    bool sparse_;
    std::size_t page_;
    std::vector<unsigned char> stage_;
    std::size_t used_;
    off_t stageOffset_; // where stage_[0] goes in the file
    off_t end_;         // one past the last byte written so far
    bool failed_;
};

#endif
