// The advisory lock on a data folder that keeps the program and its companions from working on
// one folder's files at the same time. It is taken on the folder itself, so no lock file is left
// behind, and it lasts as long as the object: the kernel drops it when the process ends, however
// it ends.
#ifndef PINDLE_FOLDER_LOCK_H
#define PINDLE_FOLDER_LOCK_H

class FolderLock {
public:
    enum class State {
        Held,       // this process has the folder to itself
        Busy,       // another process holds the lock
        Unavailable // the folder cannot be opened or its file system has no such locks
    };

    // Tries once, without waiting.
    explicit FolderLock(const char* folder);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    State state() const { return state_; }

private:
    int fd_;
    State state_;
};

#endif
