// Data files opened without blocking, then switched back to blocking for plain reads and writes.
#include "data_file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace DataFile {

int open(const char* name, int flags, int mode) {
    int fd = ::open(name, flags | O_NONBLOCK | O_CLOEXEC, mode);
    if (fd < 0)
        return -1;
    struct stat info {};
    if (fstat(fd, &info) != 0 || S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode) ||
        fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK) != 0) {
        close(fd);
        // Never ENOENT left from before: a caller tells a missing file by it.
        errno = ENXIO;
        return -1;
    }
    return fd;
}

bool syncFolder() {
    int folder = ::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    bool synced = folder >= 0 && fsync(folder) == 0;
    if (folder >= 0)
        close(folder);
    return synced;
}

} // namespace DataFile
