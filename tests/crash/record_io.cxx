// Preloaded into one save, this records what it asks of the file system in the current folder,
// where the data layer names its files: every write with its bytes, truncation, sync, rename,
// unlink and creation, in order, so that the crash-state test can build each state a crash could
// leave. Calls are passed on unchanged. PINDLE_RECORD_LOG names the log file.
//
// Log lines, one per call on a name without a slash (the folder itself is "."):
//   open NAME | write NAME OFFSET HEX | truncate NAME LENGTH | sync NAME | syncdir
//   rename FROM TO | unlink NAME
// A descriptor's name is the one it was opened under. The test replays the log and compares the
// result with the folder the save left, so a call the data layer makes and this misses shows.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

extern "C" {

static char* names[1024];

// The log, opened at the first call; null when nothing is recorded.
static FILE* log_file() {
    static FILE* file =
        getenv("PINDLE_RECORD_LOG") != NULL ? fopen(getenv("PINDLE_RECORD_LOG"), "w") : NULL;
    return file;
}

// Each line goes out at once: the process may be killed right after the call.
static void note(const char* format, ...) {
    va_list args;
    va_start(args, format);
    vfprintf(log_file(), format, args);
    va_end(args);
    fflush(log_file());
}

static bool here(const char* path) {
    return log_file() != NULL && strchr(path, '/') == NULL;
}

static const char* tracked(int fd) {
    return log_file() != NULL && fd >= 0 && fd < 1024 ? names[fd] : NULL;
}

static void log_write(int fd, const void* data, ssize_t size, off_t offset) {
    if (tracked(fd) == NULL || size <= 0)
        return;
    fprintf(log_file(), "write %s %lld ", tracked(fd), (long long)offset);
    for (ssize_t i = 0; i < size; i++)
        fprintf(log_file(), "%02x", static_cast<const unsigned char*>(data)[i]);
    note("\n");
}

// The call that was preloaded over, found once.
#define NEXT(name)                                                                                 \
    static const auto next = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name))

int open(const char* path, int flags, ...) {
    NEXT(open);
    va_list args;
    va_start(args, flags);
    int mode = (flags & O_CREAT) ? va_arg(args, int) : 0;
    va_end(args);
    int fd = next(path, flags, mode);
    if (fd >= 0 && fd < 1024 && here(path)) {
        free(names[fd]);
        names[fd] = strdup(path);
        if (strcmp(path, ".") != 0)
            note("open %s\n", path);
        if (flags & O_TRUNC)
            note("truncate %s 0\n", path);
    }
    return fd;
}
int open64(const char* path, int flags, ...) __attribute__((alias("open")));

int close(int fd) {
    NEXT(close);
    if (fd >= 0 && fd < 1024) {
        free(names[fd]);
        names[fd] = NULL;
    }
    return next(fd);
}

ssize_t pwrite(int fd, const void* data, size_t size, off_t offset) {
    NEXT(pwrite);
    ssize_t done = next(fd, data, size, offset);
    log_write(fd, data, done, offset);
    return done;
}
ssize_t pwrite64(int fd, const void* data, size_t size, off_t offset)
    __attribute__((alias("pwrite")));

ssize_t write(int fd, const void* data, size_t size) {
    NEXT(write);
    off_t at = tracked(fd) != NULL ? lseek(fd, 0, SEEK_CUR) : 0;
    ssize_t done = next(fd, data, size);
    log_write(fd, data, done, at);
    return done;
}

ssize_t copy_file_range(int in, off_t* in_at, int out, off_t* out_at, size_t size, unsigned flags) {
    NEXT(copy_file_range);
    off_t from = in_at != NULL ? *in_at : lseek(in, 0, SEEK_CUR);
    off_t to = out_at != NULL ? *out_at : lseek(out, 0, SEEK_CUR);
    ssize_t done = next(in, in_at, out, out_at, size, flags);
    if (done > 0 && tracked(out) != NULL) {
        char* bytes = static_cast<char*>(malloc((size_t)done));
        if (pread(in, bytes, (size_t)done, from) == done)
            log_write(out, bytes, done, to);
        free(bytes);
    }
    return done;
}

int ftruncate(int fd, off_t length) {
    NEXT(ftruncate);
    int result = next(fd, length);
    if (result == 0 && tracked(fd) != NULL)
        note("truncate %s %lld\n", tracked(fd), (long long)length);
    return result;
}
int ftruncate64(int fd, off_t length) __attribute__((alias("ftruncate")));

static int log_sync(int fd, int result) {
    if (result == 0 && tracked(fd) != NULL && strcmp(tracked(fd), ".") == 0)
        note("syncdir\n");
    else if (result == 0 && tracked(fd) != NULL)
        note("sync %s\n", tracked(fd));
    return result;
}

int fsync(int fd) {
    NEXT(fsync);
    return log_sync(fd, next(fd));
}

int fdatasync(int fd) {
    NEXT(fdatasync);
    return log_sync(fd, next(fd));
}

int rename(const char* from, const char* to) {
    NEXT(rename);
    int result = next(from, to);
    if (result == 0 && here(from) && here(to))
        note("rename %s %s\n", from, to);
    return result;
}

int unlink(const char* path) {
    NEXT(unlink);
    int result = next(path);
    if (result == 0 && here(path))
        note("unlink %s\n", path);
    return result;
}

} // extern "C"
