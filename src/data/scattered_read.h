// Many small reads of one file in few system calls: a load wants a few hundred bytes of every
// record, 32 KB apart, and on a machine where each call is dear the calls, not the bytes, are
// what it costs. The reads go to the kernel a batch at a time through io_uring where it is
// offered (a container may refuse it), else one pread() each, as do a few reads alone. Owns its
// ring, not the file.
#ifndef PINDLE_SCATTERED_READ_H
#define PINDLE_SCATTERED_READ_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

struct io_uring;

class ScatteredRead {
public:
    explicit ScatteredRead(int fd);
    ~ScatteredRead();
    ScatteredRead(const ScatteredRead&) = delete;
    ScatteredRead& operator=(const ScatteredRead&) = delete;

    // Queues a read of `size` bytes at `offset` into `out`, which must stay valid until run().
    void add(std::uint64_t offset, unsigned char* out, std::size_t size);

    // Makes every queued read and empties the queue; true when each got all its bytes.
    bool run();

private:
    struct Piece {
        std::uint64_t offset;
        unsigned char* out;
        std::size_t size;
    };

    bool readAlone(const Piece& piece) const;
    bool readAlone(std::size_t first, std::size_t last) const;
    bool runBatch(std::size_t first, std::size_t last);
    void dropRing();

    int fd_;
    // The ring, set up at the first run that is worth one, unless the kernel refused it.
    bool tried_;
    std::unique_ptr<io_uring> ring_;
    std::vector<Piece> queued_;
};

#endif
