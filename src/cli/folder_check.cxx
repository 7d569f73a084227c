// The folder and its two files, checked with stat and access before any store loads.
#include "folder_check.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace FolderCheck {

namespace {

bool readable(const char* name, std::string& reason) {
    struct stat info;
    if (stat(name, &info) != 0 || access(name, R_OK) != 0) {
        reason = std::strerror(errno);
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        reason = "not a regular file";
        return false;
    }
    return true;
}

} // namespace

bool enter(const std::string& dir, std::string& error) {
    if (chdir(dir.c_str()) != 0) {
        error = "cannot enter folder " + dir + ": " + std::strerror(errno);
        return false;
    }
    for (const char* name : {"pindle_todo.db", "cat.db"}) {
        std::string reason;
        if (!readable(name, reason)) {
            error = "cannot read " + dir + "/" + name + ": " + reason;
            return false;
        }
    }
    return true;
}

} // namespace FolderCheck
