// In-place saves: open, identify, write ranges, cut, stamp.
#include "file_update.h"

#include "data_file.h"
#include "data_report.h"
#include "kept_copy.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

FileUpdate::FileUpdate(const char* name, const FileStamp& lastSeen, bool mustOpen)
    : fd_(DataFile::open(name, O_RDWR | O_CREAT)), opened_{}, inPlace_(false),
      changed_(false), name_{}, kept_{}, out_(fd_) {
    if (fd_ < 0) {
        if (mustOpen)
            DataReport::fail("could not open file %s", name);
        return;
    }
    if (fstat(fd_, &opened_) != 0)
        failWrite();
    // The one place that decides whether the file on disk is still the one last seen.
    inPlace_ = lastSeen.matches(opened_);
    // A file with records this store never saw came from elsewhere: never lost unseen.
    if (!inPlace_ && S_ISREG(opened_.st_mode) && opened_.st_size > 0 &&
        !KeptCopy::make(fd_, name, kept_, sizeof kept_))
        DataReport::fail("could not keep a copy of %s, which another program changed", name);
    if (kept_[0] != '\0')
        std::snprintf(name_, sizeof name_, "%s", name);
}

FileUpdate::~FileUpdate() {
    if (fd_ >= 0)
        close(fd_);
}

unsigned char* FileUpdate::at(std::uint64_t offset, std::size_t size) {
    changed_ = true;
    unsigned char* room = out_.at(offset, size);
    if (room == nullptr)
        failWrite();
    return room;
}

FileStamp FileUpdate::finish(std::uint64_t length) {
    if (!out_.finish())
        failWrite();
    if (!S_ISREG(opened_.st_mode))
        return FileStamp(opened_);
    auto size = static_cast<off_t>(length);
    if (opened_.st_size != size) {
        changed_ = true;
        if (ftruncate(fd_, size) != 0)
            failWrite();
    }
    // A save that changed the file is on the disk before it returns, so a power cut can no
    // longer take it back. It costs under a millisecond for an edit; a save with nothing to
    // write, as most tab switches are, makes no request of the disk at all.
    if (changed_ && fdatasync(fd_) != 0)
        failWrite();
    // A file system that cannot set the time still holds every byte, so that is no failure.
    const timespec now[2] = {{0, UTIME_OMIT}, {0, UTIME_NOW}};
    futimens(fd_, now);
    struct stat written {};
    if (fstat(fd_, &written) != 0)
        failWrite();
    if (kept_[0] != '\0')
        DataReport::notice("%s was changed by another program; that version is kept as %s", name_,
                           kept_);
    return FileStamp(written);
}

void FileUpdate::failWrite() {
    DataReport::fail("could not write records!");
}
