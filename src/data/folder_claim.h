// A program's claim on a data folder for as long as it runs: one window per folder, and one sync
// per folder, each refusing a second copy of itself while leaving the other free to work beside
// it. Each role is a lock on its own byte of the folder (an open file description lock, shared
// so that a folder opened read-only can carry it), so no lock file is left behind and the kernel
// drops the claim when the process ends, however it ends. A claim is tested and taken under the
// folder's exclusive lock, so that two copies starting together cannot both find the role free.
#ifndef PINDLE_FOLDER_CLAIM_H
#define PINDLE_FOLDER_CLAIM_H

class FolderClaim {
public:
    enum class Role { Window = 1, Sync = 2 };
    enum class State {
        Held,       // this process has the role on the folder
        Busy,       // another process has it
        Unavailable // the folder cannot be opened or its file system has no such locks
    };

    // Tries once; waits only for the folder's lock, which is never held for long.
    FolderClaim(const char* folder, Role role);
    ~FolderClaim();
    FolderClaim(const FolderClaim&) = delete;
    FolderClaim& operator=(const FolderClaim&) = delete;

    State state() const { return state_; }

private:
    State claim(Role role);

    int fd_;
    State state_;
};

#endif
