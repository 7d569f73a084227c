// Writes a file in order through a staging buffer of a few records, so that a save costs a few
// large writes instead of one per record. Every failed byte is reported.
#ifndef PINDLE_STAGED_WRITER_H
#define PINDLE_STAGED_WRITER_H

#include <cstddef>
#include <memory>

class StagedWriter {
public:
    // `fd` is open for writing at offset 0 (a regular file, a device or a pipe).
    explicit StagedWriter(int fd) : fd_(fd) {}

    // Room for the next `size` bytes of the file, valid until the next call; null once a write
    // has failed.
    unsigned char* next(std::size_t size);

    // Writes what is still staged. False if this or any earlier write failed; the file then
    // holds exactly the bytes that went out before the failure, as writing in order gives.
    bool finish();

private:
    bool flush();

    int fd_;
    std::unique_ptr<unsigned char[]> stage_;
    std::size_t size_ = 0;
    std::size_t used_ = 0;
    bool failed_ = false;
};

#endif
