// Private files: O_TRUNC into "<name>.new", fsync, rename; the temporary removed on failure.
#include "private_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace PrivateFile {

namespace {

bool writeAll(int fd, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

} // namespace

bool write(const std::string& path, const std::string& text, std::string& error) {
    const std::string temporary = path + ".new";
    int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    bool ok = fd >= 0 && fchmod(fd, 0600) == 0 && writeAll(fd, text) && fsync(fd) == 0;
    if (fd >= 0 && close(fd) != 0)
        ok = false;
    if (ok && std::rename(temporary.c_str(), path.c_str()) == 0)
        return true;
    error = "cannot write " + path + ": " + std::strerror(errno);
    unlink(temporary.c_str());
    return false;
}

} // namespace PrivateFile
