// The save journal: written through a staged writer and hashed as it goes, read back with
// pread, carried out with copy_file_range from the journal into the data files.
#include "save_journal.h"

#include "data_file.h"
#include "data_report.h"
#include "field_codec.h"
#include "kept_copy.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char kMagic[8] = {'P', 'I', 'N', 'D', 'L', 'E', '-', 'J'};
constexpr std::uint32_t kVersion = 1;
// A file of ten thousand to-dos is 321 MB; a journal naming offsets past this is not ours.
constexpr std::uint64_t kMaxOffset = std::uint64_t{1} << 40;
const char* const kDataFiles[] = {"pindle_todo.db", "cat.db"};

std::uint64_t chain(std::uint64_t seed, const unsigned char* bytes, std::size_t size) {
    return XXH3_64bits_withSeed(bytes, size, seed);
}

void putInt64(unsigned char* out, std::uint64_t value) {
    FieldCodec::putInt32(out, static_cast<int>(value >> 32));
    FieldCodec::putInt32(out + 4, static_cast<int>(value));
}

std::uint64_t getInt64(const unsigned char* in) {
    return std::uint64_t{static_cast<std::uint32_t>(FieldCodec::getInt32(in))} << 32 |
           static_cast<std::uint32_t>(FieldCodec::getInt32(in + 4));
}

bool isDataFile(const std::string& name) {
    for (const char* known : kDataFiles) {
        if (name == known)
            return true;
    }
    return false;
}

bool exists(const char* name) {
    struct stat info {};
    return lstat(name, &info) == 0;
}

// Copies `size` bytes from `from` at `at` to `to` at `offset`, in the kernel where it can.
bool copyRange(int from, std::uint64_t at, int to, std::uint64_t offset, std::uint64_t size) {
    auto in = static_cast<off_t>(at), out = static_cast<off_t>(offset);
    while (size > 0) {
        ssize_t n = copy_file_range(from, &in, to, &out, size, 0);
        if (n < 0 && (errno == EXDEV || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP))
            break;
        if (n <= 0)
            return false;
        size -= static_cast<std::uint64_t>(n);
    }
    unsigned char buffer[65536];
    while (size > 0) {
        auto chunk = static_cast<std::size_t>(std::min<std::uint64_t>(size, sizeof buffer));
        if (pread(from, buffer, chunk, in) != static_cast<ssize_t>(chunk) ||
            pwrite(to, buffer, chunk, out) != static_cast<ssize_t>(chunk))
            return false;
        in += static_cast<off_t>(chunk);
        out += static_cast<off_t>(chunk);
        size -= chunk;
    }
    return true;
}

} // namespace

// Reads a journal back, checking each part as it goes: false from any reader call means the
// journal is cut short, damaged or not one of ours.
class SaveJournal::Reader {
public:
    explicit Reader(int fd) : fd_(fd), at_(0), checksum_(0) {}

    // Torn: cut short or not yet on the disk (zeros) before its header was whole, as a crash
    // leaves a journal still being written. Foreign: another program's or another version's.
    enum class Header { Ours, Torn, Foreign };

    Header header(std::vector<std::string>& names) {
        unsigned char start[13] = {};
        const ssize_t got = pread(fd_, start, sizeof start, 0);
        at_ = sizeof start;
        const auto magic = static_cast<std::size_t>(std::clamp<ssize_t>(got, 0, sizeof kMagic));
        const unsigned char zeros[sizeof kMagic] = {};
        if (std::memcmp(start, zeros, sizeof zeros) == 0 ||
            (got < static_cast<ssize_t>(sizeof start) && std::memcmp(start, kMagic, magic) == 0))
            return Header::Torn;
        if (std::memcmp(start, kMagic, sizeof kMagic) != 0 ||
            static_cast<std::uint32_t>(FieldCodec::getInt32(start + 8)) != kVersion)
            return Header::Foreign;
        std::string bytes(reinterpret_cast<char*>(start), sizeof start);
        for (int i = 0; i < start[12]; i++) {
            unsigned char length[2];
            if (!read(length, 2))
                return Header::Torn;
            std::string name(length[0] * 256u + length[1], '\0');
            if (!read(reinterpret_cast<unsigned char*>(name.data()), name.size()))
                return Header::Torn;
            if (!isDataFile(name))
                return Header::Foreign;
            bytes += std::string(reinterpret_cast<char*>(length), 2) + name;
            names.push_back(name);
        }
        checksum_ = chain(0, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
        return Header::Ours;
    }

    // The next entry; false at the end (`complete` then says whether the journal is whole).
    bool entry(std::size_t files, Entry& e, bool& complete) {
        unsigned char tag = 0;
        complete = false;
        if (!read(&tag, 1))
            return false;
        if (tag == 'E')
            return (complete = trailer(), false);
        unsigned char head[13];
        std::size_t size = tag == 'W' ? 13 : tag == 'L' ? 9 : tag == 'R' ? 1 : 0;
        if (size == 0 || !read(head, size) || head[0] >= files)
            return false;
        e = {static_cast<char>(tag), head[0], 0, 0, 0};
        if (tag != 'R')
            e.offset = getInt64(head + 1);
        unsigned char tagged[14] = {tag};
        std::memcpy(tagged + 1, head, size);
        checksum_ = chain(checksum_, tagged, size + 1);
        entries_++;
        if (tag != 'W')
            return e.offset <= kMaxOffset;
        e.size = static_cast<std::uint32_t>(FieldCodec::getInt32(head + 9));
        e.at = at_;
        return e.offset + e.size <= kMaxOffset && hashData(e.size);
    }

private:
    bool read(unsigned char* out, std::size_t size) {
        ssize_t got = pread(fd_, out, size, static_cast<off_t>(at_));
        at_ += size;
        return got == static_cast<ssize_t>(size);
    }

    // In pieces, as a hostile size must not decide how much memory is taken.
    bool hashData(std::uint64_t size) {
        XXH3_state_t state;
        XXH3_INITSTATE(&state);
        XXH3_64bits_reset_withSeed(&state, checksum_);
        unsigned char piece[65536];
        while (size > 0) {
            const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(size, sizeof piece));
            if (!read(piece, n))
                return false;
            XXH3_64bits_update(&state, piece, n);
            size -= n;
        }
        checksum_ = XXH3_64bits_digest(&state);
        return true;
    }

    bool trailer() {
        unsigned char end[16];
        struct stat info {};
        return read(end, sizeof end) && getInt64(end) == entries_ &&
               getInt64(end + 8) == checksum_ && fstat(fd_, &info) == 0 &&
               static_cast<std::uint64_t>(info.st_size) == at_;
    }

    int fd_;
    std::uint64_t at_;
    std::uint64_t checksum_;
    std::uint64_t entries_ = 0;
};

SaveJournal::SaveJournal(std::vector<std::string> names)
    : SaveJournal(std::move(names), open(kName, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), {}) {
    if (fd_ >= 0)
        out_ = std::make_unique<StagedWriter>(fd_);
    std::string header(kMagic, sizeof kMagic);
    header += std::string(4, '\0');
    FieldCodec::putInt32(reinterpret_cast<unsigned char*>(header.data()) + 8, kVersion);
    header += static_cast<char>(names_.size());
    for (const std::string& name : names_)
        header +=
            std::string{static_cast<char>(name.size() >> 8), static_cast<char>(name.size())} + name;
    if (unsigned char* room = append(header.size()))
        std::memcpy(room, header.data(), header.size());
}

SaveJournal::SaveJournal(std::vector<std::string> names, int fd, std::vector<Entry> entries)
    : names_(std::move(names)), entries_(std::move(entries)), fd_(fd), written_(0), checksum_(0),
      unhashed_(nullptr), unhashedSize_(0) {}

SaveJournal::~SaveJournal() {
    if (fd_ >= 0)
        close(fd_);
}

std::string SaveJournal::newFileName(const std::string& name) {
    return "." + name + ".new";
}

// One hashed part of the journal: the one before it is hashed now, as its bytes are in.
unsigned char* SaveJournal::append(std::size_t size) {
    if (unhashed_ != nullptr)
        checksum_ = chain(checksum_, unhashed_, unhashedSize_);
    unhashed_ = out_ != nullptr ? out_->next(size) : nullptr;
    unhashedSize_ = size;
    written_ += size;
    return unhashed_;
}

unsigned char* SaveJournal::write(int file, std::uint64_t offset, std::size_t size) {
    unsigned char* head = append(14);
    if (head == nullptr)
        return nullptr;
    head[0] = 'W';
    head[1] = static_cast<unsigned char>(file);
    putInt64(head + 2, offset);
    FieldCodec::putInt32(head + 10, static_cast<int>(size));
    entries_.push_back({'W', file, offset, size, written_});
    return append(size);
}

void SaveJournal::setLength(int file, std::uint64_t length) {
    if (unsigned char* head = append(10)) {
        head[0] = 'L';
        head[1] = static_cast<unsigned char>(file);
        putInt64(head + 2, length);
    }
    entries_.push_back({'L', file, length, 0, 0});
}

void SaveJournal::replace(int file) {
    if (unsigned char* head = append(2)) {
        head[0] = 'R';
        head[1] = static_cast<unsigned char>(file);
    }
    entries_.push_back({'R', file, 0, 0, 0});
}

bool SaveJournal::commit() {
    append(0);
    unsigned char end[17] = {'E'};
    putInt64(end + 1, entries_.size());
    putInt64(end + 9, checksum_);
    unsigned char* room = out_ != nullptr ? out_->next(sizeof end) : nullptr;
    if (room == nullptr)
        return false;
    std::memcpy(room, end, sizeof end);
    return out_->finish() && fdatasync(fd_) == 0 && DataFile::syncFolder();
}

bool SaveJournal::applyToFile(int file) {
    const char* name = names_[static_cast<std::size_t>(file)].c_str();
    bool changes = false, replaced = false;
    for (const Entry& e : entries_) {
        if (e.file == file) {
            changes = changes || e.tag != 'R';
            replaced = replaced || e.tag == 'R';
        }
    }
    if (changes) {
        int fd = DataFile::open(name, O_RDWR | O_CREAT);
        bool ok = fd >= 0;
        for (const Entry& e : entries_) {
            if (ok && e.file == file && e.tag == 'W')
                ok = copyRange(fd_, e.at, fd, e.offset, e.size);
            else if (ok && e.file == file && e.tag == 'L')
                ok = ftruncate(fd, static_cast<off_t>(e.offset)) == 0;
        }
        ok = ok && fdatasync(fd) == 0;
        if (fd >= 0)
            close(fd);
        if (!ok)
            return false;
    }
    // Renamed already, by the run a crash cut short, when the new file is gone.
    const std::string fresh = newFileName(name);
    return !replaced || rename(fresh.c_str(), name) == 0 || errno == ENOENT;
}

bool SaveJournal::apply() {
    bool renames = false;
    for (std::size_t file = 0; file < names_.size(); file++) {
        if (!applyToFile(static_cast<int>(file)))
            return false;
    }
    for (const Entry& e : entries_)
        renames = renames || e.tag == 'R';
    return (!renames || DataFile::syncFolder()) && unlink(kName) == 0;
}

bool SaveJournal::leftOver() {
    return exists(kName) || exists(newFileName(kDataFiles[0]).c_str()) ||
           exists(newFileName(kDataFiles[1]).c_str());
}

void SaveJournal::recover() {
    int fd = open(kName, O_RDONLY | O_CLOEXEC);
    if (fd >= 0) {
        Reader reader(fd);
        std::vector<std::string> names;
        std::vector<Entry> entries;
        Entry e{};
        bool complete = false;
        const Reader::Header header = reader.header(names);
        while (header == Reader::Header::Ours && reader.entry(names.size(), e, complete))
            entries.push_back(e);
        SaveJournal journal(names, fd, std::move(entries));
        if (complete) {
            if (!journal.apply())
                DataReport::fail("could not finish the last save from %s: %s", kName,
                                 std::strerror(errno));
            // Cut short by a crash or by a failure to write: the journal reads the same.
            DataReport::recovery("finished the last save, which had been cut short");
        } else if (header != Reader::Header::Foreign) {
            // Nothing is written to the files before their journal is whole and on the disk.
            unlink(kName);
            DataReport::recovery("threw away the journal of a save cut short before it began: "
                                 "the files hold the list as it was before that save");
        } else {
            char kept[300];
            bool aside =
                KeptCopy::make(fd, kName, "unreadable", kept, sizeof kept) && unlink(kName) == 0;
            DataReport::notice("%s is not a save journal this program can read; it is kept as "
                               "%s and the files are left as they are",
                               kName, aside ? kept : kName);
        }
    }
    for (const char* name : kDataFiles)
        unlink(newFileName(name).c_str());
}
