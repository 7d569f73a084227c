// Folder claims: an F_OFD_GETLK probe and an F_OFD_SETLK read lock on the role's byte of the
// folder, both under the folder's exclusive lock.
#include "folder_claim.h"

#include "folder_lock.h"

#include <fcntl.h>
#include <unistd.h>

FolderClaim::FolderClaim(const char* folder, Role role)
    : fd_(open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC)), state_(State::Unavailable) {
    if (fd_ < 0)
        return;
    {
        FolderLock serialised(fd_, FolderLock::Mode::Exclusive);
        state_ = claim(role);
    }
    if (state_ != State::Held) {
        close(fd_);
        fd_ = -1;
    }
}

FolderClaim::~FolderClaim() {
    if (fd_ >= 0)
        close(fd_);
}

FolderClaim::State FolderClaim::claim(Role role) {
    struct flock byte {};
    byte.l_whence = SEEK_SET;
    byte.l_start = static_cast<off_t>(role);
    byte.l_len = 1;
    // Asking about a write lock finds any lock on the byte, shared ones included.
    byte.l_type = F_WRLCK;
    if (fcntl(fd_, F_OFD_GETLK, &byte) != 0)
        return State::Unavailable;
    if (byte.l_type != F_UNLCK)
        return State::Busy;
    byte.l_type = F_RDLCK;
    return fcntl(fd_, F_OFD_SETLK, &byte) == 0 ? State::Held : State::Unavailable;
}
