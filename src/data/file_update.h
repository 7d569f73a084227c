// One save of a data file, made in place: the file is opened without truncating it, held against
// the stamp of the file as the store last loaded or wrote it, given the byte ranges the save
// asks for at their offsets, then cut to its new length and stamped again. Nothing is written
// to a temporary file and nothing is renamed. A file changed by another program since is first
// kept beside it, and the user told. The failures end the program with status 200.
#ifndef PINDLE_FILE_UPDATE_H
#define PINDLE_FILE_UPDATE_H

#include "file_stamp.h"
#include "staged_writer.h"

#include <cstddef>
#include <cstdint>

class FileUpdate {
public:
    // Opens `name` for writing, creating it if need be; a pipe or a socket in its place cannot
    // be opened. If it cannot be opened: with `mustOpen` says so and ends the program,
    // otherwise leaves isOpen() false.
    FileUpdate(const char* name, const FileStamp& lastSeen, bool mustOpen);
    ~FileUpdate();
    FileUpdate(const FileUpdate&) = delete;
    FileUpdate& operator=(const FileUpdate&) = delete;

    bool isOpen() const { return fd_ >= 0; }

    // True when the file is the one `lastSeen` was taken of, unchanged since: the store knows
    // what it holds and need write only what differs. Otherwise the save must write every record
    // from the start.
    bool inPlace() const { return inPlace_; }

    // Room for `size` bytes that go to `offset`, past every range asked for before.
    unsigned char* at(std::uint64_t offset, std::size_t size);

    // Writes what is still staged and, for a regular file, sets its length, waits for what
    // changed to reach the disk, and moves its modification time even when no byte changed, as
    // rewriting it would; then tells of a kept copy. Returns the stamp of the file as it now is.
    FileStamp finish(std::uint64_t length);

private:
    [[noreturn]] static void failWrite();

    int fd_;
    struct stat opened_;
    bool inPlace_;
    bool changed_;
    // The file's name and its kept copy's, when one was made.
    char name_[256];
    char kept_[300];
    StagedWriter out_;
};

#endif
