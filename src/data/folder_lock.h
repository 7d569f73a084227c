// The data folder's lock around reading and writing its files: shared while a program reads
// them, exclusive while one reads and writes them, so that nobody ever reads a file half
// written and no two saves mix. It is taken on the folder itself, so no lock file is left
// behind, and held only for as long as the object lives: one read or one change, never across
// network traffic or a person's typing. Where the file system has no such locks it is not held,
// and the files are read and written as they always were.
#ifndef PINDLE_FOLDER_LOCK_H
#define PINDLE_FOLDER_LOCK_H

class FolderLock {
public:
    enum class Mode { Shared, Exclusive };

    // Waits for the lock on the folder open as `folder` (a descriptor; -1 takes nothing).
    FolderLock(int folder, Mode mode);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    int fd_;
};

#endif
