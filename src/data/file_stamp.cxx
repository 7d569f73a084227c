// File stamps: taken from stat, compared field by field.
#include "file_stamp.h"

#include <cerrno>

namespace {
bool sameTime(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}
} // namespace

FileStamp::FileStamp()
    : kind_(Kind::Unknown), device_(0), inode_(0), size_(0), modified_{}, changed_{} {}

FileStamp::FileStamp(const struct stat& info)
    : kind_(S_ISREG(info.st_mode) ? Kind::Regular : Kind::Other), device_(info.st_dev),
      inode_(info.st_ino), size_(info.st_size), modified_(info.st_mtim), changed_(info.st_ctim) {}

FileStamp FileStamp::of(const char* name) {
    struct stat info {};
    if (stat(name, &info) == 0)
        return FileStamp(info);
    // A link that leads nowhere, or round in a loop, is something standing there all the same.
    if (errno != ENOENT && lstat(name, &info) == 0)
        return FileStamp(info);
    FileStamp stamp;
    if (errno == ENOENT || errno == ENOTDIR)
        stamp.kind_ = Kind::Missing;
    return stamp;
}

bool FileStamp::matches(const struct stat& info) const {
    return kind_ == Kind::Regular && sameAs(FileStamp(info));
}

bool FileStamp::keepsBytesOf(const struct stat& info) const {
    return kind_ == Kind::Regular && S_ISREG(info.st_mode) && device_ == info.st_dev &&
           inode_ == info.st_ino && size_ == info.st_size && sameTime(modified_, info.st_mtim) &&
           (sameTime(changed_, info.st_ctim) || info.st_nlink == 0);
}

bool FileStamp::sameAs(const FileStamp& other) const {
    if (kind_ != other.kind_ || kind_ == Kind::Unknown)
        return false;
    if (kind_ == Kind::Missing)
        return true;
    return device_ == other.device_ && inode_ == other.inode_ && size_ == other.size_ &&
           sameTime(modified_, other.modified_) && sameTime(changed_, other.changed_);
}
