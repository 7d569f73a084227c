// The folder watch: an inotify descriptor on ".", registered with Fl::add_fd, or a repeating
// one-second timeout.
#include "folder_watch.h"

#include <FL/Fl.H>

#include <cstdint>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

namespace {
// Everything that changes what a name holds: writes, a cut, a new file, a rename onto it, a
// removal, and attribute changes, which a copy that keeps times shows as its last step.
constexpr std::uint32_t kEvents =
    IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;

bool isDataFile(const char* name) {
    return std::strcmp(name, "pindle_todo.db") == 0 || std::strcmp(name, "cat.db") == 0;
}
} // namespace

FolderWatch::FolderWatch(Handler handler, void* data)
    : handler_(handler), data_(data), fd_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
      pending_(false) {
    if (fd_ >= 0 && inotify_add_watch(fd_, ".", kEvents) < 0) {
        close(fd_);
        fd_ = -1;
    }
    if (fd_ >= 0)
        Fl::add_fd(fd_, FL_READ, readEvents, this);
    else
        Fl::add_timeout(kPollSeconds, poll, this);
}

FolderWatch::~FolderWatch() {
    Fl::remove_timeout(settled, this);
    if (fd_ >= 0) {
        Fl::remove_fd(fd_);
        close(fd_);
    } else {
        Fl::remove_timeout(poll, this);
    }
}

void FolderWatch::readEvents(int, void* self) {
    auto* watch = static_cast<FolderWatch*>(self);
    if (watch->drainMentionsDataFile() && !watch->pending_) {
        watch->pending_ = true;
        Fl::add_timeout(kSettleSeconds, settled, watch);
    }
}

// Reads every event waiting; true if any may concern a data file, an overflow included.
bool FolderWatch::drainMentionsDataFile() {
    alignas(inotify_event) char buffer[4096];
    bool mentioned = false;
    for (;;) {
        ssize_t got = read(fd_, buffer, sizeof buffer);
        if (got <= 0)
            return mentioned;
        for (ssize_t at = 0; at < got;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            if ((event->mask & IN_Q_OVERFLOW) != 0 || (event->len > 0 && isDataFile(event->name)))
                mentioned = true;
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
    }
}

void FolderWatch::settled(void* self) {
    auto* watch = static_cast<FolderWatch*>(self);
    watch->pending_ = false;
    watch->handler_(watch->data_);
}

void FolderWatch::poll(void* self) {
    auto* watch = static_cast<FolderWatch*>(self);
    Fl::repeat_timeout(kPollSeconds, poll, self);
    watch->handler_(watch->data_);
}
