// A loaded file version: its descriptor, checked against its stamp around every read.
#include "file_version.h"

#include "data_file.h"

#include <fcntl.h>
#include <optional>
#include <unistd.h>

FileVersion::FileVersion(int fd, const struct stat& info) : fd_(fd), stamp_(info) {
    // Later reads are a record here and there: reading ahead would fetch what nobody wants.
    posix_fadvise(fd_, 0, 0, POSIX_FADV_RANDOM);
}

FileVersion::~FileVersion() {
    close(fd_);
}

std::shared_ptr<FileVersion> FileVersion::reopen(const char* name, const FileStamp& stamp) {
    const int fd = DataFile::open(name, O_RDONLY);
    struct stat info {};
    if (fd >= 0 && fstat(fd, &info) == 0 && stamp.matches(info))
        return std::make_shared<FileVersion>(fd, info);
    if (fd >= 0)
        close(fd);
    return nullptr;
}

bool FileVersion::intact() const {
    struct stat info {};
    return fstat(fd_, &info) == 0 && stamp_.keepsBytesOf(info);
}

// Checked before and after, under the lock: a program that ignores the lock and writes while
// the bytes are read shows afterwards.
bool FileVersion::read(std::uint64_t offset, unsigned char* out, std::size_t size) const {
    std::optional<FolderReads::Hold> hold;
    if (reads_)
        hold.emplace(*reads_, FolderLock::Mode::Shared);
    if (!intact())
        return false;
    std::size_t got = 0;
    while (got < size) {
        const ssize_t n = pread(fd_, out + got, size - got, static_cast<off_t>(offset + got));
        if (n <= 0)
            return false;
        got += static_cast<std::size_t>(n);
    }
    return intact();
}
