// Progress as one line redrawn in place.
#include "progress.h"

#include <cstdio>
#include <unistd.h>

namespace {
constexpr auto kMoment = std::chrono::milliseconds(500);
constexpr auto kRedraw = std::chrono::milliseconds(100);
} // namespace

Progress::Progress() : terminal_(isatty(STDERR_FILENO) == 1), began_(Clock::now()) {}

Progress::~Progress() {
    if (shown_)
        std::fputc('\n', stderr);
}

void Progress::start(int total) {
    done_ = 0;
    total_ = total;
}

void Progress::step() {
    done_++;
    if (!terminal_)
        return;
    Clock::time_point now = Clock::now();
    bool last = done_ == total_;
    if (now - began_ < kMoment || (!last && shown_ && now - lastShown_ < kRedraw))
        return;
    // The line is finished with the last step, so that what the sync says next starts afresh.
    std::fprintf(stderr, "\rpindle_sync: %d of %d%s", done_, total_, last ? "\n" : "");
    std::fflush(stderr);
    shown_ = !last;
    lastShown_ = now;
}
