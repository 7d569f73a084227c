// Reading the password without leaving it anywhere but in memory.
#include "credentials.h"

#include "keyring.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t kMaxPassword = 4096;

// Opened first and checked through the descriptor, so the file checked is the file read.
bool readPrivateFile(const std::string& name, std::string& text, std::string& error) {
    int fd = open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = "cannot read password file " + name + ": " + std::strerror(errno);
        return false;
    }
    struct stat info;
    bool ok = fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
    if (!ok)
        error = "password file " + name + " is not a regular file";
    else if ((info.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        error = "password file " + name + " is open to others; run chmod 600 on it";
    char buffer[kMaxPassword];
    ssize_t got = ok && error.empty() ? read(fd, buffer, sizeof buffer) : -1;
    close(fd);
    if (error.empty() && got < 0)
        error = "cannot read password file " + name;
    if (got > 0)
        text.assign(buffer, static_cast<std::size_t>(got));
    explicit_bzero(buffer, sizeof buffer);
    return error.empty();
}

} // namespace

bool Credentials::gather(const std::string& url, const std::string& user, const std::string& source,
                         Credentials& out, std::string& error) {
    out.user = user;
    const char* fromEnv = std::getenv("PINDLE_SYNC_PASSWORD");
    if (source.rfind("file:", 0) == 0) {
        if (!readPrivateFile(source.substr(5), out.password, error))
            return false;
        out.password.resize(std::min(out.password.find_first_of("\r\n"), out.password.size()));
        // An empty file is more likely a mistake than a password the server would take.
        if (out.password.empty())
            error = "password file " + source.substr(5) + " holds no password on its first line";
        return error.empty();
    }
    if (source == "keyring")
        return Keyring::lookup(url, user, out.password, error);
    if (source == "environment" && fromEnv == nullptr) {
        error = "the settings take the password from PINDLE_SYNC_PASSWORD, which is not set";
        return false;
    }
    if (fromEnv != nullptr && source != "netrc") {
        out.password = fromEnv;
        return true;
    }
    out.fromNetrc = true;
    return true;
}
