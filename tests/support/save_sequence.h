// Runs of what the program does to a store around its saves (append, edit in place, remove,
// purge, save, reload) mixed with changes other programs make to the file, for the in-place
// save's tests and fuzz target. After every save the file must hold exactly the whole encoding
// of the list, and the save must have written only the records that differ from the file it
// last wrote or loaded (their link slots alone when only those differ), or every record when
// something else changed the file since.
#ifndef PINDLE_TEST_SAVE_SEQUENCE_H
#define PINDLE_TEST_SAVE_SEQUENCE_H

#include "category_store.h"
#include "support/store_helpers.h"
#include "todo_store.h"

#include <cstdint>
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
// of full length, and shorter texts over longer ones leave bytes behind their terminators.
inline void fill(TodoRecord& r, std::uint32_t v) {
    r.month = static_cast<int>(v % 3);
    r.completed = (v >> 2) % 4 == 0;
    r.setCategory(std::string((v >> 4) % 8 == 0 ? 50 : (v >> 4) % 3, 'c').c_str());
    r.setDescription(std::string((v >> 7) % 3, 'd').c_str());
    r.setNotes(std::string((v >> 9) % 16 == 0 ? (v >> 13) % 32000 : (v >> 13) % 3, 'n').c_str());
}
inline void fill(CategoryRecord& r, std::uint32_t v) {
    r.setName(std::string(v % 8 == 0 ? 60 : v % 3, (v >> 3) % 2 ? 'a' : 'b').c_str());
}
inline bool doomed(const TodoRecord& r) {
    return r.completed != 0;
}
inline bool doomed(const CategoryRecord& r) {
    return r.name[0] == 'a';
}

// The whole file in one read; empty when it is missing.
inline std::string readFile(const char* name) {
    struct stat info {};
    if (stat(name, &info) != 0)
        return {};
    std::string bytes(static_cast<std::size_t>(info.st_size), '\0');
    std::ifstream(name, std::ios::binary).read(bytes.data(), info.st_size);
    return bytes;
}

inline void writeFile(const char* name, const std::string& bytes) {
    std::ofstream(name, std::ios::binary) << bytes;
}

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

    // One operation, picked by `op`; a non-empty result tells which check failed.
    std::string step(std::uint8_t op, std::uint32_t arg) {
        const int n = store_->count();
        const int at = n > 0 ? static_cast<int>(arg % static_cast<unsigned>(n)) : 0;
        switch (op % 16) {
        case 0:
        case 1:
        case 2:
            if (n < maxCount_) {
                auto* r = new Record;
                fill(*r, arg);
                store_->append(r);
            }
            return {};
        case 3:
        case 4:
        case 5:
            if (n > 0)
                fill(*store_->at(at), arg >> 8);
            return {};
        case 6:
        case 7:
            if (n > 0)
                store_->remove(store_->at(at));
            return {};
        case 8:
            store_->removeIf([](const Record& r) { return doomed(r); });
            return {};
        case 9:
            reload();
            return {};
        case 10:
            return changeFile(arg);
        default:
            return save();
        }
    }

private:
    enum class Expect { Changes, Everything, Unchecked };

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

    std::string save() {
        long long before = writtenBytes();
        store_->save();
        long long written = writtenBytes() - before;
        const std::string whole = encoding();
        if (!std::filesystem::exists(name()) || readFile(name()) != whole)
            return "the file is not the whole encoding of the list";
        long long expected = expect_ == Expect::Changes ? changedBytes(known_, whole)
                                                        : static_cast<long long>(whole.size());
        if (expect_ != Expect::Unchecked && written != expected)
            return "wrote " + std::to_string(written) + " bytes, not " + std::to_string(expected);
        known_ = whole;
        expect_ = Expect::Changes;
        return {};
    }

    // A file that holds its records as a save writes them is known to the store in full.
    void reload() {
        store_.reset();
        store_ = std::make_unique<ScopedStore<Store>>();
        known_ = readFile(name());
        bool asSaved =
            known_.substr(0, known_.size() - known_.size() % Record::kFileSize) == encoding();
        if (!std::filesystem::exists(name()))
            expect_ = Expect::Everything;
        else
            expect_ = asSaved ? Expect::Changes : Expect::Unchecked;
    }

    std::string changeFile(std::uint32_t arg) {
        std::string bytes = readFile(name());
        struct stat old {};
        stat(name(), &old);
        switch (arg % 6) {
        case 0: // replaced by another file
            writeFile("replacement", bytes + "x");
            std::rename("replacement", name());
            break;
        case 1: // cut short
            if (!bytes.empty() && truncate(name(), static_cast<off_t>(bytes.size() / 2)) != 0)
                return "cannot cut the file short";
            break;
        case 2: // grown
            writeFile(name(), bytes + std::string(arg % 100, 'g'));
            break;
        case 3: { // overwritten at the same size and put back with its old modification time
            if (bytes.empty())
                return {};
            bytes[arg % bytes.size()] ^= 1;
            writeFile(name(), bytes);
            const timespec times[2] = {old.st_atim, old.st_mtim};
            utimensat(AT_FDCWD, name(), times, 0);
            break;
        }
        case 4:
            std::remove(name());
            break;
        case 5: // written by a program that leaves other link values and loaded again
            for (std::size_t at = Record::kLinkAt; at + 1 < bytes.size(); at += Record::kFileSize)
                bytes[at] = static_cast<char>(arg | 1);
            writeFile(name(), bytes);
            reload();
            return {};
        }
        expect_ = Expect::Everything;
        return {};
    }

    int maxCount_;
    std::unique_ptr<ScopedStore<Store>> store_;
    // The file as the last save or load left it, and what the next save must write.
    std::string known_;
    Expect expect_ = Expect::Changes;
};

} // namespace SaveSequence

#endif
