// A save's data file: open, identify, keep a changed file's copy, write a whole new one, stamp.
#include "save_target.h"

#include "data_file.h"
#include "data_report.h"
#include "kept_copy.h"
#include "save_journal.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

SaveTarget::SaveTarget(const char* name, const FileStamp& lastSeen, bool mustOpen)
    : name_(name), fd_(DataFile::open(name, O_RDWR)),
      missing_(fd_ < 0 && errno == ENOENT), opened_{}, inPlace_(false), length_(0),
      wholeFd_(-1), kept_{} {
    if (!isOpen()) {
        if (mustOpen)
            DataReport::fail("could not open file %s", name);
        return;
    }
    if (missing_)
        return;
    if (fstat(fd_, &opened_) != 0)
        failWrite();
    // The one place that decides whether the file on disk is still the one last seen.
    inPlace_ = lastSeen.matches(opened_);
    // A file with records this store never saw came from elsewhere: never lost unseen.
    if (!inPlace_ && S_ISREG(opened_.st_mode) && opened_.st_size > 0 &&
        !KeptCopy::make(fd_, name, "changed-elsewhere", kept_, sizeof kept_))
        DataReport::fail("could not keep a copy of %s, which another program changed", name);
}

SaveTarget::~SaveTarget() {
    if (fd_ >= 0)
        close(fd_);
    if (wholeFd_ >= 0)
        close(wholeFd_);
}

// A link would be replaced by a file, and a second name would keep the old one.
bool SaveTarget::replaceable() const {
    struct stat here {};
    return missing_ || (S_ISREG(opened_.st_mode) && opened_.st_nlink == 1 &&
                        lstat(name_.c_str(), &here) == 0 && S_ISREG(here.st_mode));
}

void SaveTarget::startWhole() {
    if (direct()) {
        out_ = std::make_unique<StagedWriter>(fd_);
        return;
    }
    const std::string fresh = SaveJournal::newFileName(name_);
    wholeFd_ = open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    // The new file takes the old one's permissions.
    if (wholeFd_ < 0 || (!missing_ && fchmod(wholeFd_, opened_.st_mode & 07777) != 0))
        failWrite();
    out_ = std::make_unique<StagedWriter>(wholeFd_);
}

unsigned char* SaveTarget::next(std::size_t size) {
    unsigned char* room = out_->next(size);
    if (room == nullptr)
        failWrite();
    return room;
}

void SaveTarget::finishWhole() {
    if (!out_->finish())
        failWrite();
    if (direct())
        return;
    if (ftruncate(wholeFd_, static_cast<off_t>(length_)) != 0 || fdatasync(wholeFd_) != 0)
        failWrite();
}

FileStamp SaveTarget::finish() {
    if (direct())
        return FileStamp(opened_);
    struct stat now {};
    bool ok = false;
    if (wholeFd_ >= 0) {
        ok = stat(name_.c_str(), &now) == 0;
    } else {
        // A file system that cannot set the time still holds every byte, so that is no failure.
        const timespec times[2] = {{0, UTIME_OMIT}, {0, UTIME_NOW}};
        futimens(fd_, times);
        ok = fstat(fd_, &now) == 0;
    }
    if (!ok)
        failWrite();
    if (kept_[0] != '\0')
        DataReport::notice("%s was changed by another program; that version is kept as %s",
                           name_.c_str(), kept_);
    return FileStamp(now);
}

void SaveTarget::failWrite() {
    DataReport::fail("could not write records!");
}
