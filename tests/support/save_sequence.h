// Runs of what the program does to a store around its saves (append, edit in place, remove,
// purge, save, reload) mixed with changes other programs make to the file, for the in-place
// save's tests and fuzz target. After every save the file must hold exactly the whole encoding
// of the list, and the save must have written only the records that differ from the file it
// last wrote or loaded (their link slots alone when only those differ), once into the save's
// journal and once in place, or the file whole when that is less; every record when something
// else changed the file since, after keeping what that change left in a copy. A to-do store
// reads a record's first bytes at a load and long notes only when they are needed: a change made
// in place by a program that ignores the folder's lock takes from it what was still to be read,
// so the runs read every to-do's notes before they make one; and bytes after the notes'
// terminator past what a load reads are rewritten only with their record, so other programs'
// stray bytes land where a load reads.
#ifndef PINDLE_TEST_SAVE_SEQUENCE_H
#define PINDLE_TEST_SAVE_SEQUENCE_H

#include "category_store.h"
#include "support/store_helpers.h"
#include "todo_store.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>

namespace SaveSequence {

// Contents from a small set, so that many edits leave a record as it was; now and then texts
// of full length, and shorter texts over longer ones leave bytes behind their terminators. A
// to-do's texts share one letter, so that an edit may only move bytes from one text to the next.
struct Contents {
    static void fill(TodoRecord& r, std::uint32_t v) {
        r.month = static_cast<int>(v % 3);
        r.completed = (v >> 2) % 8 == 0;
        r.setCategory(std::string((v >> 5) % 8 == 0 ? 50 : (v >> 5) % 3, 't').c_str());
        r.setDescription(std::string((v >> 8) % 3, 't').c_str());
        r.setNotes(std::string((v >> 10) % 16 ? (v >> 14) % 3 : (v >> 14) % 32000, 't').c_str());
    }
    static void fill(CategoryRecord& r, std::uint32_t v) {
        r.setName(std::string(v % 8 == 0 ? 60 : v % 3, (v >> 3) % 2 ? 'a' : 'b').c_str());
    }
    static bool doomed(const TodoRecord& r) { return r.completed != 0; }
    static bool doomed(const CategoryRecord& r) { return std::strlen(r.name) > 50; }
};

// Bytes this process has handed to write() and its kin so far. Read without iostreams, whose
// checks under UBSan write to a pipe of their own.
inline long long writtenBytes() {
    char text[512] = "";
    int fd = open("/proc/self/io", O_RDONLY);
    ssize_t n = read(fd, text, sizeof text - 1);
    close(fd);
    const char* wchar = n > 0 ? std::strstr(text, "wchar:") : nullptr;
    return wchar != nullptr ? std::atoll(wchar + 6) : -1;
}

template <class Store> class Run {
public:
    using Record = std::remove_pointer_t<decltype(Store::head)>;

    explicit Run(int maxCount) : maxCount_(maxCount) { reload(); }

    // One operation, picked by `op` with the odds of the letters here: append, edit, remove,
    // purge, reload, a change by another program, save. A non-empty result tells what failed.
    std::string step(std::uint8_t op, std::uint32_t arg) {
        const int n = store_->count();
        Record* at = n > 0 ? store_->at(static_cast<int>(arg % static_cast<unsigned>(n))) : nullptr;
        switch ("aaaaaeeerrplcsss"[op % 16]) {
        case 'a':
            if (n < maxCount_) {
                store_->append(new Record);
                Contents::fill(*store_->at(n), arg);
            }
            break;
        case 'e':
            if (at != nullptr)
                Contents::fill(*at, arg >> 8);
            break;
        case 'r':
            if (at != nullptr)
                store_->remove(at);
            break;
        case 'p':
            store_->removeIf([](const Record& r) { return Contents::doomed(r); });
            break;
        case 'l':
            reload();
            break;
        case 'c':
            changeFile(arg);
            break;
        default:
            return save();
        }
        return {};
    }

private:
    const char* name() const { return store_->fileName; }

    std::string encoding() const {
        std::string bytes(static_cast<std::size_t>(store_->count()) * Record::kFileSize, '\0');
        auto* block = reinterpret_cast<unsigned char*>(bytes.data());
        for (const Record* r = store_->head; r != nullptr; r = r->next, block += Record::kFileSize)
            r->encode(block, r->next == nullptr);
        return bytes;
    }

    // What an in-place save must write to turn `old` into `now`.
    static long long changedBytes(const std::string& old, const std::string& now) {
        const std::size_t size = Record::kFileSize, link = Record::kLinkAt;
        long long bytes = 0;
        for (std::size_t at = 0; at < now.size(); at += size) {
            if (at + size > old.size() || old.compare(at, link, now, at, link) != 0)
                bytes += size;
            else if (old.compare(at + link, size - link, now, at + link, size - link) != 0)
                bytes += size - link;
        }
        return bytes;
    }

    // The copy a save kept of a file changed by others, read and removed, and the bytes of the
    // line that told of it; both empty when none was kept.
    std::pair<std::string, long long> takeKeptCopy() const {
        const std::string prefix = std::string(name()) + ".changed-elsewhere-";
        std::string bytes;
        long long told = 0;
        for (const auto& entry : std::filesystem::directory_iterator(".")) {
            const std::string file = entry.path().filename();
            if (file.compare(0, prefix.size(), prefix) == 0) {
                bytes += readFile(file.c_str());
                told += std::snprintf(nullptr, 0,
                                      "%s was changed by another program; that "
                                      "version is kept as %s\n",
                                      name(), file.c_str());
                std::filesystem::remove(entry.path());
            }
        }
        return {bytes, told};
    }

    std::string save() {
        long long before = writtenBytes();
        store_->save();
        long long written = writtenBytes() - before;
        const std::string whole = encoding();
        if (access(name(), F_OK) != 0 || readFile(name()) != whole)
            return "the file is not the whole encoding of the list";
        const auto [kept, told] = takeKeptCopy();
        if (kept != othersFile_)
            return "the copy kept of the file changed by others is not what they left";
        // Changes go to the journal and then in place, unless writing the file whole is less; a
        // save with nothing to change writes nothing at all.
        const long long changed = changedBytes(known_, whole);
        const bool same = changed == 0 && known_.size() == whole.size();
        const long long overhead = same ? 0 : 4096 + 16LL * store_->count();
        const long long most =
            std::min(2 * changed, static_cast<long long>(whole.size())) + overhead;
        const long long others = static_cast<long long>(kept.size()) + told;
        othersFile_.clear();
        if (checked_ && (written - others > most || written - others < changed))
            return "wrote " + std::to_string(written - others) + " bytes for " +
                   std::to_string(changed) + " changed";
        known_ = whole;
        checked_ = true;
        return {};
    }

    // A file that holds its records as a save writes them is known to the store in full.
    void reload() {
        store_.reset();
        store_ = std::make_unique<ScopedStore<Store>>();
        known_ = readFile(name());
        othersFile_.clear();
        checked_ =
            known_.substr(0, known_.size() - known_.size() % Record::kFileSize) == encoding();
    }

    void readWhole() {
        if constexpr (std::is_same_v<Store, TodoStore>)
            store_->readAllNotes();
    }

    // Each leaves a file that stat tells apart from the last one saved, whatever the clock's
    // granularity: another inode, another size, or an older modification time.
    void changeFile(std::uint32_t arg) {
        if (arg % 5 == 1 || arg % 5 == 2)
            readWhole();
        std::string bytes = readFile(name());
        struct stat old {};
        stat(name(), &old);
        known_.clear(); // the store knows nothing of the file now: every record must go out
        switch (arg % 5) {
        case 0: // replaced by another file
            std::ofstream("replacement", std::ios::binary) << bytes;
            std::rename("replacement", name());
            break;
        case 1: // cut short or grown
            bytes.resize(
                arg % 2 && !bytes.empty() ? arg % bytes.size() : bytes.size() + 1 + arg % 99, 'g');
            std::ofstream(name(), std::ios::binary) << bytes;
            break;
        case 2: { // overwritten at the same size and put back with an older modification time
            const std::size_t records = bytes.size() / Record::kFileSize;
            const std::size_t within = arg / 8 % (Record::kHeadSize + FieldCodec::kLinkSize);
            if (records > 0)
                bytes[arg % records * Record::kFileSize +
                      (within < Record::kHeadSize
                           ? within
                           : within + Record::kLinkAt - Record::kHeadSize)] ^= 1;
            std::ofstream(name(), std::ios::binary) << bytes;
            const timespec times[2] = {old.st_atim, {old.st_mtim.tv_sec - 1, old.st_mtim.tv_nsec}};
            utimensat(AT_FDCWD, name(), times, 0);
            break;
        }
        case 3:
            std::remove(name());
            break;
        default: { // written by another program, which leaves a stray byte in each record: in
                   // its link slot, anywhere a load reads, or among a to-do's first fields; and
                   // loaded again
            const std::size_t head = arg & 8 ? 117 : Record::kHeadSize;
            const std::size_t stray =
                arg & 4 ? Record::kLinkAt : arg / 16 % head % Record::kHeadSize;
            for (std::size_t at = stray; at < bytes.size(); at += Record::kFileSize)
                bytes[at] = 'j';
            std::ofstream(name(), std::ios::binary) << bytes;
            reload();
            checked_ = false;
            return;
        }
        }
        othersFile_ = readFile(name());
    }

    int maxCount_;
    std::unique_ptr<ScopedStore<Store>> store_;
    // The file as the store knows it from the last save or load, and whether the next save's
    // bytes can be told in advance.
    std::string known_;
    bool checked_ = true;
    // What another program left in the file since the store last saw it, which the next save
    // must keep in a copy before writing over it; empty when there is nothing to keep.
    std::string othersFile_;
};

} // namespace SaveSequence

#endif
