// One data file in a save. It is opened without truncating it and held against the stamp of the
// file as its store last loaded or wrote it; a file that another program changed since is first
// kept beside it, and the user told. Its new bytes go one of three ways: into the save's journal,
// to be written in place; into a whole new file, ".NAME.new", that then replaces it (when most of
// the file changes, or nothing of it is known); or, for a device in the file's place, straight
// to the device, which keeps nothing a journal could protect. Failures end the program with
// status 200.
#ifndef PINDLE_SAVE_TARGET_H
#define PINDLE_SAVE_TARGET_H

#include "file_stamp.h"
#include "staged_writer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <sys/stat.h>

class SaveTarget {
public:
    // Opens `name` for writing; a missing file is one to make, a pipe or a socket in its place
    // cannot be opened. If it cannot be opened: with `mustOpen` says so and ends the program,
    // otherwise leaves isOpen() false.
    SaveTarget(const char* name, const FileStamp& lastSeen, bool mustOpen);
    ~SaveTarget();
    SaveTarget(const SaveTarget&) = delete;
    SaveTarget& operator=(const SaveTarget&) = delete;

    bool isOpen() const { return fd_ >= 0 || missing_; }
    const std::string& name() const { return name_; }

    // True when the file is the one `lastSeen` was taken of, unchanged since: its store knows
    // what it holds and need write only what differs.
    bool inPlace() const { return inPlace_; }
    // True when a new file may replace it: it is a regular file in the folder itself, or new.
    bool replaceable() const;
    // True for a device, written straight.
    bool direct() const { return !missing_ && !S_ISREG(opened_.st_mode); }

    // Starts the whole new file (or, for a device, the writes to it); next() gives room for its
    // bytes in order from the start.
    void startWhole();
    bool whole() const { return out_ != nullptr; }
    unsigned char* next(std::size_t size);

    std::uint64_t length() const { return length_; }
    void setLength(std::uint64_t length) { length_ = length; }
    bool lengthChanges() const {
        return missing_ || static_cast<std::uint64_t>(opened_.st_size) != length_;
    }

    // Writes what is still staged of a whole new file and makes it durable.
    void finishWhole();

    // Once the save is done: the new modification time even when no byte changed, as a rewrite
    // would give it, the kept copy told of, and the stamp of the file as it now is.
    FileStamp finish();

private:
    [[noreturn]] static void failWrite();

    std::string name_;
    int fd_;
    bool missing_;
    struct stat opened_;
    bool inPlace_;
    std::uint64_t length_;
    int wholeFd_;
    std::unique_ptr<StagedWriter> out_;
    char kept_[300];
};

#endif
