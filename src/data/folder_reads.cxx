// Holds on the folder's lock: taken by the outermost hold only.
#include "folder_reads.h"

FolderReads::Hold::Hold(FolderReads& reads, FolderLock::Mode mode) : reads_(reads) {
    if (reads_.held_ || reads_.fd_ < 0)
        return;
    lock_.emplace(reads_.fd_, mode);
    reads_.held_ = true;
}

FolderReads::Hold::~Hold() {
    if (!lock_)
        return;
    lock_.reset();
    reads_.held_ = false;
}
