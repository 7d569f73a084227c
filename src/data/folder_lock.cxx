// The folder lock: flock on a descriptor of the folder, kept open while the lock is held.
#include "folder_lock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

FolderLock::FolderLock(const char* folder) : fd_(-1), state_(State::Unavailable) {
    fd_ = open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd_ < 0)
        return;
    if (flock(fd_, LOCK_EX | LOCK_NB) == 0) {
        state_ = State::Held;
        return;
    }
    if (errno == EWOULDBLOCK)
        state_ = State::Busy;
    close(fd_);
    fd_ = -1;
}

FolderLock::~FolderLock() {
    if (fd_ >= 0)
        close(fd_);
}
