// Preloaded into one save, this records what it asks of the file system in one folder: every
// write with its bytes, truncation, sync, rename, unlink and creation, in order, so that the
// crash-state test can build each state a crash could leave. Calls are passed on unchanged.
// PINDLE_RECORD_DIR names the folder (an absolute path), PINDLE_RECORD_LOG the log file.
//
// Log lines, one per call that touches the folder:
//   open PATH | write PATH OFFSET HEX | truncate PATH LENGTH | sync PATH | syncdir
//   rename FROM TO | unlink PATH
// Paths are relative to the folder; a descriptor's path is the one it was opened under.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#define MAX_FDS 1024

extern "C" {

static char* paths[MAX_FDS];
static FILE* log_file;
static char folder[PATH_MAX];

static void init(void) {
    if (log_file != NULL || getenv("PINDLE_RECORD_LOG") == NULL)
        return;
    log_file = fopen(getenv("PINDLE_RECORD_LOG"), "w");
    snprintf(folder, sizeof folder, "%s/", getenv("PINDLE_RECORD_DIR"));
}

// The name of `path` inside the folder ("." for the folder itself), or null for anything else.
static const char* inside(const char* path, char* out) {
    char absolute[2 * PATH_MAX];
    char cwd[PATH_MAX];
    if (path[0] == '/')
        snprintf(absolute, sizeof absolute, "%s", path);
    else if (getcwd(cwd, sizeof cwd) != NULL)
        snprintf(absolute, sizeof absolute, "%s/%s", cwd, path);
    else
        return NULL;
    size_t length = strlen(absolute);
    if (length >= 2 && strcmp(absolute + length - 2, "/.") == 0)
        absolute[length - 2] = '\0';
    size_t n = strlen(folder);
    if (strncmp(absolute, folder, n - 1) == 0 && absolute[n - 1] == '\0') {
        snprintf(out, PATH_MAX, ".");
        return out;
    }
    if (strncmp(absolute, folder, n) != 0 || strchr(absolute + n, '/') != NULL)
        return NULL;
    snprintf(out, PATH_MAX, "%s", absolute + n);
    return out;
}

static void note_fd(int fd, const char* path) {
    char name[PATH_MAX];
    init();
    if (log_file == NULL || fd < 0 || fd >= MAX_FDS || inside(path, name) == NULL)
        return;
    free(paths[fd]);
    paths[fd] = strdup(name);
    if (strcmp(name, ".") != 0)
        fprintf(log_file, "open %s\n", name);
    fflush(log_file);
}

static const char* tracked(int fd) {
    init();
    return log_file != NULL && fd >= 0 && fd < MAX_FDS ? paths[fd] : NULL;
}

static void log_write(int fd, const void* data, size_t size, off_t offset) {
    const char* path = tracked(fd);
    if (path == NULL || size == 0)
        return;
    fprintf(log_file, "write %s %lld ", path, (long long)offset);
    for (size_t i = 0; i < size; i++)
        fprintf(log_file, "%02x", (static_cast<const unsigned char*>(data))[i]);
    fputc('\n', log_file);
    fflush(log_file);
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
    note_fd(fd, path);
    return fd;
}
int open64(const char* path, int flags, ...) __attribute__((alias("open")));

int openat(int dirfd, const char* path, int flags, ...) {
    NEXT(openat);
    va_list args;
    va_start(args, flags);
    int mode = (flags & O_CREAT) ? va_arg(args, int) : 0;
    va_end(args);
    int fd = next(dirfd, path, flags, mode);
    if (dirfd == AT_FDCWD || path[0] == '/')
        note_fd(fd, path);
    return fd;
}
int openat64(int dirfd, const char* path, int flags, ...) __attribute__((alias("openat")));

int close(int fd) {
    NEXT(close);
    if (fd >= 0 && fd < MAX_FDS) {
        free(paths[fd]);
        paths[fd] = NULL;
    }
    return next(fd);
}

ssize_t pwrite(int fd, const void* data, size_t size, off_t offset) {
    NEXT(pwrite);
    ssize_t done = next(fd, data, size, offset);
    if (done > 0)
        log_write(fd, data, (size_t)done, offset);
    return done;
}
ssize_t pwrite64(int fd, const void* data, size_t size, off_t offset)
    __attribute__((alias("pwrite")));

ssize_t write(int fd, const void* data, size_t size) {
    NEXT(write);
    off_t at = tracked(fd) != NULL ? lseek(fd, 0, SEEK_CUR) : 0;
    ssize_t done = next(fd, data, size);
    if (done > 0)
        log_write(fd, data, (size_t)done, at);
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
            log_write(out, bytes, (size_t)done, to);
        free(bytes);
    }
    return done;
}

int ftruncate(int fd, off_t length) {
    NEXT(ftruncate);
    int result = next(fd, length);
    if (result == 0 && tracked(fd) != NULL) {
        fprintf(log_file, "truncate %s %lld\n", tracked(fd), (long long)length);
        fflush(log_file);
    }
    return result;
}
int ftruncate64(int fd, off_t length) __attribute__((alias("ftruncate")));

static void log_sync(int fd) {
    const char* path = tracked(fd);
    if (path == NULL)
        return;
    if (strcmp(path, ".") == 0)
        fprintf(log_file, "syncdir\n");
    else
        fprintf(log_file, "sync %s\n", path);
    fflush(log_file);
}

int fsync(int fd) {
    NEXT(fsync);
    int result = next(fd);
    if (result == 0)
        log_sync(fd);
    return result;
}

int fdatasync(int fd) {
    NEXT(fdatasync);
    int result = next(fd);
    if (result == 0)
        log_sync(fd);
    return result;
}

int rename(const char* from, const char* to) {
    NEXT(rename);
    int result = next(from, to);
    char a[PATH_MAX], b[PATH_MAX];
    init();
    if (result == 0 && log_file != NULL && inside(from, a) != NULL && inside(to, b) != NULL) {
        fprintf(log_file, "rename %s %s\n", a, b);
        fflush(log_file);
    }
    return result;
}

int unlink(const char* path) {
    NEXT(unlink);
    int result = next(path);
    char name[PATH_MAX];
    init();
    if (result == 0 && log_file != NULL && inside(path, name) != NULL) {
        fprintf(log_file, "unlink %s\n", name);
        fflush(log_file);
    }
    return result;
}

} // extern "C"
