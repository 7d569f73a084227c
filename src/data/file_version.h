// One version of a data file, as a store loaded or last wrote it, held open so that what the
// load left in the file (a to-do's long notes) is read later from these very bytes and never
// from a later version. A replacement of the file by a rename leaves this version readable
// through its descriptor; a change in place (another program's save, under the folder's lock or
// not) ends it, and reads then fail rather than mix two versions. Owns the descriptor; shared by
// the store and by every record, or copy of one, that still has bytes to read from it.
#ifndef PINDLE_FILE_VERSION_H
#define PINDLE_FILE_VERSION_H

#include "file_stamp.h"
#include "folder_reads.h"

#include <cstddef>
#include <cstdint>
#include <memory>

class FileVersion {
public:
    // Takes `fd`, open for reading on the regular file `info` describes.
    FileVersion(int fd, const struct stat& info);
    ~FileVersion();
    FileVersion(const FileVersion&) = delete;
    FileVersion& operator=(const FileVersion&) = delete;

    // Opens `name` and keeps it if it is still the file `stamp` describes; null otherwise.
    static std::shared_ptr<FileVersion> reopen(const char* name, const FileStamp& stamp);

    // Reads go through `reads` (the folder's lock) from now on.
    void readThrough(std::shared_ptr<FolderReads> reads) { reads_ = std::move(reads); }

    // Fills `out` with the `size` bytes at `offset`; false when the file no longer holds this
    // version or ends before them.
    bool read(std::uint64_t offset, unsigned char* out, std::size_t size) const;

private:
    bool intact() const;

    int fd_;
    FileStamp stamp_;
    std::shared_ptr<FolderReads> reads_;
};

#endif
