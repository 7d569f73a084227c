// This process's hold on its data folder's lock, so that a read of a data file made after its
// load keeps out of other programs' saves without undoing a lock already held: a read inside a
// refresh or a change takes nothing more (a second flock on the folder would trade the lock held
// for its own and give it up at its end), any other read holds the shared lock while it reads.
// Owned by the data folder, shared by every loaded file version that reads through it, and
// closed with the folder: a version that outlives it reads without the lock.
#ifndef PINDLE_FOLDER_READS_H
#define PINDLE_FOLDER_READS_H

#include "folder_lock.h"

#include <optional>

class FolderReads {
public:
    // The folder's lock in `mode` from construction to destruction, unless this process holds it
    // already.
    class Hold {
    public:
        Hold(FolderReads& reads, FolderLock::Mode mode);
        ~Hold();
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

    private:
        FolderReads& reads_;
        std::optional<FolderLock> lock_;
    };

    // `folder` is the folder's descriptor, owned by the caller until close().
    explicit FolderReads(int folder) : fd_(folder), held_(false) {}

    bool held() const { return held_; }

    // The folder's descriptor is about to be closed.
    void close() { fd_ = -1; }

private:
    int fd_;
    bool held_;
};

#endif
