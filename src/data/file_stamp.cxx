// File stamps: taken from fstat, compared field by field.
#include "file_stamp.h"

namespace {
bool sameTime(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}
} // namespace

FileStamp::FileStamp() : known_(false), device_(0), inode_(0), size_(0), modified_{}, changed_{} {}

FileStamp::FileStamp(const struct stat& info)
    : known_(S_ISREG(info.st_mode)), device_(info.st_dev), inode_(info.st_ino), size_(info.st_size),
      modified_(info.st_mtim), changed_(info.st_ctim) {}

bool FileStamp::matches(const struct stat& info) const {
    return known_ && S_ISREG(info.st_mode) && info.st_dev == device_ && info.st_ino == inode_ &&
           info.st_size == size_ && sameTime(info.st_mtim, modified_) &&
           sameTime(info.st_ctim, changed_);
}
