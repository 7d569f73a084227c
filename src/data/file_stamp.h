// What tells a data file apart as a store last loaded or wrote it: device, inode, size and the
// modification and change times. A save that finds the file on disk no longer matching its stamp
// (replaced, cut, grown, touched, or something other than a regular file) knows nothing of what
// the file holds and writes it whole. A stamp is also taken of a name where no regular file
// stands, so that a store can tell whether anything came or went there since it last looked.
#ifndef PINDLE_FILE_STAMP_H
#define PINDLE_FILE_STAMP_H

#include <sys/stat.h>

class FileStamp {
public:
    // Nothing known: matches nothing, not even another unknown stamp.
    FileStamp();
    // The file `info` describes; only a regular file can match a later stat, since a device or a
    // pipe keeps nothing that a later save could build on.
    explicit FileStamp(const struct stat& info);

    // What stands at `name` now: a regular file, something else, or nothing.
    static FileStamp of(const char* name);

    // True when `info` describes the very regular file of this stamp, unchanged since it was
    // taken. The change time cannot be set from user space, so even a file put back with its old
    // modification time (a backup copied over it) shows up as changed.
    bool matches(const struct stat& info) const;

    // True when `info` describes the very regular file of this stamp with its bytes as they were:
    // what a descriptor held open on it can still read. A rename over the file, or its removal,
    // moves its change time but not its bytes; a file with no name left is taken as unchanged.
    bool keepsBytesOf(const struct stat& info) const;

    // True when both stamps saw the same thing: the same unchanged regular file, nothing at all,
    // or the same other kind of file.
    bool sameAs(const FileStamp& other) const;

private:
    enum class Kind { Unknown, Missing, Other, Regular };

    Kind kind_;
    dev_t device_;
    ino_t inode_;
    off_t size_;
    timespec modified_;
    timespec changed_;
};

#endif
