// The folder lock: flock on a descriptor of the folder, released when the object ends.
#include "folder_lock.h"

#include <cerrno>
#include <sys/file.h>

FolderLock::FolderLock(int folder, Mode mode) : fd_(-1) {
    if (folder < 0)
        return;
    int result;
    do
        result = flock(folder, mode == Mode::Shared ? LOCK_SH : LOCK_EX);
    while (result != 0 && errno == EINTR);
    if (result == 0)
        fd_ = folder;
}

FolderLock::~FolderLock() {
    if (fd_ >= 0)
        flock(fd_, LOCK_UN);
}
