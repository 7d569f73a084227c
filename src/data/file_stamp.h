// What tells a data file apart as a store last loaded or wrote it: device, inode, size and the
// modification and change times. A save that finds the file on disk no longer matching its stamp
// (replaced, cut, grown, touched, or something other than a regular file) knows nothing of what
// the file holds and writes it whole.
#ifndef PINDLE_FILE_STAMP_H
#define PINDLE_FILE_STAMP_H

#include <sys/stat.h>

class FileStamp {
public:
    // No file: matches nothing.
    FileStamp();
    // The file `info` describes; anything but a regular file gives a stamp that matches nothing,
    // since a device or a pipe keeps nothing that a later save could build on.
    explicit FileStamp(const struct stat& info);

    // True when `info` describes the very file of this stamp, unchanged since it was taken. The
    // change time cannot be set from user space, so even a file put back with its old
    // modification time (a backup copied over it) shows up as changed.
    bool matches(const struct stat& info) const;

private:
    bool known_;
    dev_t device_;
    ino_t inode_;
    off_t size_;
    timespec modified_;
    timespec changed_;
};

#endif
