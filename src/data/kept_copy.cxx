// Kept copies: a new file made exclusively under a time-stamped name, filled with pread/write.
#include "kept_copy.h"

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace KeptCopy {

namespace {
// A new file under the first free name; -1 if none could be made.
int createBeside(const char* name, const char* why, mode_t mode, char* keptName, std::size_t size) {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y%m%d-%H%M%S", &local);
    for (int n = 1; n < 100; n++) {
        int length = n == 1 ? std::snprintf(keptName, size, "%s.%s-%s", name, why, stamp)
                            : std::snprintf(keptName, size, "%s.%s-%s-%d", name, why, stamp, n);
        if (length < 0 || static_cast<std::size_t>(length) >= size)
            return -1;
        int fd = open(keptName, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (fd >= 0 || errno != EEXIST)
            return fd;
    }
    return -1;
}

bool copyAll(int from, int to) {
    constexpr std::size_t kChunk = 256 * 1024;
    auto buffer = std::make_unique<char[]>(kChunk);
    for (off_t offset = 0;;) {
        ssize_t got = pread(from, buffer.get(), kChunk, offset);
        if (got < 0)
            return false;
        if (got == 0)
            return fdatasync(to) == 0;
        for (ssize_t done = 0; done < got;) {
            ssize_t put = write(to, buffer.get() + done, static_cast<std::size_t>(got - done));
            if (put <= 0)
                return false;
            done += put;
        }
        offset += got;
    }
}
} // namespace

bool make(int fd, const char* name, const char* why, char* keptName, std::size_t size) {
    struct stat info {};
    if (fstat(fd, &info) != 0)
        return false;
    int copy = createBeside(name, why, info.st_mode & 0777, keptName, size);
    if (copy < 0)
        return false;
    bool whole = copyAll(fd, copy);
    if (close(copy) != 0)
        whole = false;
    if (!whole)
        unlink(keptName);
    return whole;
}

} // namespace KeptCopy
