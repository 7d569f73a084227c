// Scattered reads: queued, then sent to the kernel in batches through io_uring, or read alone.
#include "scattered_read.h"

#include <liburing.h>

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace {
// Reads in flight at once: enough that a load of 10,000 records takes a few dozen calls.
constexpr unsigned kDepth = 256;
// Fewer pieces than this are read alone: setting up a ring costs about as much as they do.
constexpr std::size_t kWorthARing = 32;
} // namespace

ScatteredRead::ScatteredRead(int fd) : fd_(fd), tried_(false) {}

ScatteredRead::~ScatteredRead() {
    dropRing();
}

void ScatteredRead::dropRing() {
    if (ring_)
        io_uring_queue_exit(ring_.get());
    ring_.reset();
}

void ScatteredRead::add(std::uint64_t offset, unsigned char* out, std::size_t size) {
    queued_.push_back({offset, out, size});
}

bool ScatteredRead::readAlone(const Piece& piece) const {
    std::size_t got = 0;
    while (got < piece.size) {
        const ssize_t n =
            pread(fd_, piece.out + got, piece.size - got, static_cast<off_t>(piece.offset + got));
        if (n <= 0)
            return false;
        got += static_cast<std::size_t>(n);
    }
    return true;
}

bool ScatteredRead::run() {
    if (!tried_ && queued_.size() >= kWorthARing) {
        tried_ = true;
        ring_ = std::make_unique<io_uring>();
        if (io_uring_queue_init(kDepth, ring_.get(), 0) != 0)
            ring_.reset();
    }
    bool whole = true;
    for (std::size_t first = 0; first < queued_.size(); first += kDepth) {
        const std::size_t last = std::min<std::size_t>(queued_.size(), first + kDepth);
        whole = (ring_ ? runBatch(first, last) : readAlone(first, last)) && whole;
    }
    queued_.clear();
    return whole;
}

bool ScatteredRead::readAlone(std::size_t first, std::size_t last) const {
    bool whole = true;
    for (std::size_t i = first; i < last; i++)
        whole = readAlone(queued_[i]) && whole;
    return whole;
}

// The kernel takes a batch in order; what it did not take, or could not read whole (a read cut
// short by a signal, say), is read alone, and a ring that fails is given up for good.
bool ScatteredRead::runBatch(std::size_t first, std::size_t last) {
    for (std::size_t i = first; i < last; i++) {
        io_uring_sqe* sqe = io_uring_get_sqe(ring_.get());
        io_uring_prep_read(sqe, fd_, queued_[i].out, static_cast<unsigned>(queued_[i].size),
                           queued_[i].offset);
        io_uring_sqe_set_data64(sqe, i);
    }
    const int taken = io_uring_submit_and_wait(ring_.get(), static_cast<unsigned>(last - first));
    const std::size_t submitted = taken > 0 ? static_cast<std::size_t>(taken) : 0;
    bool whole = true;
    for (std::size_t done = 0; done < submitted; done++) {
        io_uring_cqe* cqe = nullptr;
        int waited;
        while ((waited = io_uring_wait_cqe(ring_.get(), &cqe)) == -EINTR) {
        }
        if (waited != 0) {
            dropRing();
            return readAlone(first, last);
        }
        const Piece& piece = queued_[io_uring_cqe_get_data64(cqe)];
        const bool read = cqe->res >= 0 && static_cast<std::size_t>(cqe->res) == piece.size;
        io_uring_cqe_seen(ring_.get(), cqe);
        whole = (read || readAlone(piece)) && whole;
    }
    if (first + submitted < last) {
        dropRing();
        whole = readAlone(first + submitted, last) && whole;
    }
    return whole;
}
