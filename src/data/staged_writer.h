// Writes a file through a staging buffer of a few records, so that a save costs a few large
// writes instead of one per record. Ranges go out in the order they are asked for, each at its
// own offset; adjacent ones share writes. Every failed byte is reported.
#ifndef PINDLE_STAGED_WRITER_H
#define PINDLE_STAGED_WRITER_H

#include <cstddef>
#include <cstdint>
#include <memory>

class StagedWriter {
public:
    // `fd` is open for writing at offset 0 (a regular file, a device or a pipe).
    explicit StagedWriter(int fd);

    // Room for the next `size` bytes of the file, valid until the next call; null once a write
    // has failed.
    unsigned char* next(std::size_t size);

    // Room for `size` bytes at `offset`, which lies at or past the end of everything asked for
    // before. Only a file that can seek may leave gaps.
    unsigned char* at(std::uint64_t offset, std::size_t size);

    // Writes what is still staged. False if this or any earlier write failed; the file then
    // holds exactly the bytes that went out before the failure, as writing in order gives.
    bool finish();

private:
    bool flush();

    int fd_;
    bool seekable_;
    std::unique_ptr<unsigned char[]> stage_;
    std::size_t size_;
    std::size_t used_;
    // Where the first staged byte goes.
    std::uint64_t offset_;
    bool failed_;
};

#endif
