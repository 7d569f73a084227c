// The list-and-file machinery shared by the to-do and category stores: heap records in file
// order, linked and indexed by position, loaded by reading only what a record keeps in memory,
// and saved in place: each save writes only the records that differ from what the file holds,
// which the store knows by their digests and by where each record's unread bytes lie.
#ifndef PINDLE_RECORD_STORE_H
#define PINDLE_RECORD_STORE_H

#include "data_file.h"
#include "data_report.h"
#include "digest.h"
#include "field_codec.h"
#include "file_stamp.h"
#include "file_version.h"
#include "folder_reads.h"
#include "save_batch.h"
#include "scattered_read.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

// Record must provide: a default constructor that makes an empty record, a `next` pointer,
// kFileSize, kLinkAt (where its link slot lies), kHeadSize (how much of the record a load reads),
// bool decode(const unsigned char* head) (true when those bytes are as encode writes them),
// bool encode(unsigned char*, bool last) const (false when bytes it must read from a file
// cannot be), headDigest() const, a digest of what a load reads and encode writes apart from the
// link slot, std::optional<Digest> digest() const, the same of all encode writes when all of it
// is in memory, bool alike(const Record&) const, which compares what headDigest leaves out, and
// file(version, slot) and filedAt(version, slot), which say where that lies in a file.
template <class Record> class RecordStore {
    static constexpr std::size_t kLink = FieldCodec::kLinkSize;
    // What a load reads of each record, and how many records it reads at once.
    static constexpr std::size_t kPiece = kLink + Record::kHeadSize;
    static constexpr std::size_t kBatch = 256;

public:
    char fileName[256];
    // The list is read by position: count() and at(i), both in constant time. head and each
    // record's next mirror it for the record layout, the file's link slots and the export
    // writers, which walk a list from its head; the store keeps them in step.
    Record* head;

    // Takes ownership; the caller hands over a record whose next is null.
    void append(Record* record) {
        if (order_.empty())
            head = record;
        else
            order_.back()->next = record;
        order_.push_back(record);
    }

    // A record not in the list (any record, on an empty list) is left alone, not even freed.
    // Otherwise a search of the index: a few microseconds for ten thousand records.
    void remove(Record* record) {
        auto found = std::find(order_.begin(), order_.end(), record);
        if (found == order_.end())
            return;
        if (found == order_.begin())
            head = record->next;
        else
            (*(found - 1))->next = record->next;
        order_.erase(found);
        delete record;
    }

    // Removes and frees every record `doomed` accepts in one pass; the rest keep their order.
    template <class Predicate> void removeIf(Predicate doomed) {
        std::size_t kept = 0;
        for (Record* r : order_) {
            if (doomed(*r))
                delete r;
            else
                order_[kept++] = r;
        }
        order_.resize(kept);
        head = kept == 0 ? nullptr : order_.front();
        for (std::size_t i = 0; i < kept; i++)
            order_[i]->next = i + 1 < kept ? order_[i + 1] : nullptr;
    }

    // Frees every record, in one pass.
    void clear() {
        for (Record* r : order_)
            delete r;
        order_.clear();
        head = nullptr;
    }

    int count() const { return static_cast<int>(order_.size()); }

    // The position of `record` in the list, or -1.
    int indexOf(const Record* record) const {
        auto found = std::find(order_.begin(), order_.end(), record);
        return found == order_.end() ? -1 : static_cast<int>(found - order_.begin());
    }

    // The record whose content equals `like`'s, the nearest to position `near` if there are
    // several; null if there is none. How a change made on a copy finds its record again after
    // the list was read anew: the file gives records no identity but their content and order.
    Record* findLike(const Record& like, int near) const {
        const int size = count();
        if (size == 0)
            return nullptr;
        near = std::clamp(near, 0, size - 1);
        const Digest wanted = like.headDigest();
        auto holds = [&](int at) {
            return at >= 0 && at < size && order_[at]->headDigest() == wanted &&
                   order_[at]->alike(like);
        };
        for (int distance = 0; distance <= std::max(near, size - 1 - near); distance++) {
            if (holds(near - distance))
                return order_[near - distance];
            if (holds(near + distance))
                return order_[near + distance];
        }
        return nullptr;
    }

    // True when what stands at the file's name is not what the store last loaded or wrote there:
    // another program wrote, replaced, created or removed it since.
    bool changedOnDisk() const { return !stamp_.sameAs(FileStamp::of(fileName)); }

    // Any position of 0 or below gives the head; running off the end gives null.
    Record* at(int position) const {
        if (position <= 0)
            return head;
        return static_cast<std::size_t>(position) < order_.size() ? order_[position] : nullptr;
    }

    // Brings the file to exactly the bytes of every record encoded in order, atomically against
    // a crash (see SaveBatch). Only the records whose digest differs from what the file holds
    // and the link slots that change are written in place; a file that mostly changes, or that
    // is not the one last loaded or written, is written whole and replaces the old one. Inside a
    // folder's Change, the save is made when the change ends, together with the other store's.
    // An empty list leaves an empty file; a file that cannot be opened or written while there
    // are records to keep ends the program with status 200.
    void save() {
        if (batch_ != nullptr) {
            batch_->add(this, [this](SaveBatch& batch) { plan(batch); });
            return;
        }
        SaveBatch batch;
        batch.add(this, [this](SaveBatch& batch) { plan(batch); });
        batch.commit();
    }

    // Saves go into `batch` until this is called again with null.
    void joinBatch(SaveBatch* batch) { batch_ = batch; }

    // Reads of what loads leave in the file go through `reads` (the folder's lock) from now on.
    void shareReads(std::shared_ptr<FolderReads> reads) {
        reads_ = std::move(reads);
        if (version_)
            version_->readThrough(reads_);
    }

protected:
    explicit RecordStore(const char* name) : fileName{}, head(nullptr) {
        std::snprintf(fileName, sizeof fileName, "%s", name);
    }
    RecordStore(const RecordStore&) = delete;
    RecordStore& operator=(const RecordStore&) = delete;
    // Records live until the program ends; a store is never torn down while it runs.
    ~RecordStore() = default;

    // Drops every record and all the store knew of its file, then loads the file as it is now.
    bool reloadFile() {
        clear();
        held_.clear();
        stamp_ = FileStamp();
        version_.reset();
        return load();
    }

    // Returns false when the file could not be opened, a pipe or a socket in its place
    // included (reported). Reads of each whole record the file held when it was opened its first
    // kHeadSize bytes and the link slot before them: a trailing partial record is dropped without
    // a word, and a device, which has no size, gives none rather than reading for ever. The file
    // stays open, as the version its records were loaded from. A record the file holds other
    // than as a save would write it (bytes after a terminator, another link value) is remembered
    // as unknown, so the first save writes it.
    bool load() {
        const int fd = DataFile::open(fileName, O_RDONLY);
        struct stat opened {};
        if (fd < 0 || fstat(fd, &opened) != 0) {
            if (fd >= 0)
                close(fd);
            DataReport::unreadable(fileName);
            stamp_ = FileStamp::of(fileName);
            return false;
        }
        if (!S_ISREG(opened.st_mode)) {
            close(fd);
            return true;
        }
        version_ = std::make_shared<FileVersion>(fd, opened);
        version_->readThrough(reads_);
        const auto records = static_cast<std::size_t>(opened.st_size) / Record::kFileSize;
        order_.reserve(records);
        held_.reserve(records);
        // Before the reader: reads in flight write into it until the reader is gone.
        std::vector<unsigned char> bytes(kBatch * kPiece);
        ScatteredRead reader(fd);
        std::size_t loaded = 0;
        while (loaded < records) {
            const std::size_t batch = std::min(kBatch, records - loaded);
            for (std::size_t k = 0; k < batch; k++) {
                const std::size_t index = loaded + k, lead = index == 0 ? 0 : kLink;
                reader.add(index * Record::kFileSize - lead, &bytes[k * kPiece + kLink - lead],
                           lead + Record::kHeadSize);
            }
            if (!reader.run())
                break;
            for (std::size_t k = 0; k < batch; k++)
                loadRecord(&bytes[k * kPiece], loaded + k);
            loaded += batch;
        }
        unsigned char link[kLink];
        if (loaded > 0) {
            reader.add(loaded * Record::kFileSize - kLink, link, kLink);
            if (!reader.run() || !linkIs(link, loaded == records))
                held_.back().reset();
        }
        // A file that changed while it was read is not known to hold what was loaded.
        struct stat closing {};
        fstat(fd, &closing);
        if (loaded == records && FileStamp(opened).matches(closing))
            stamp_ = FileStamp(closing);
        return true;
    }

private:
    static bool linkIs(const unsigned char* slot, bool last) {
        unsigned char link[FieldCodec::kLinkSize];
        FieldCodec::putLink(link, last);
        return std::memcmp(slot, link, sizeof link) == 0;
    }

    // Record `index` from the link slot of the record before it (none for the first) and its head.
    void loadRecord(const unsigned char* bytes, std::size_t index) {
        if (index > 0 && !linkIs(bytes, false))
            held_.back().reset();
        Record* record = new Record;
        const bool asSaved = record->decode(bytes + kLink);
        record->next = nullptr;
        record->file(version_, index);
        append(record);
        held_.push_back(asSaved
                            ? std::optional<Digest>(record->digest().value_or(record->headDigest()))
                            : std::nullopt);
    }

    // True when position `slot` of the file holds the record there now exactly as it would write,
    // given its digests: the same bytes, or the same head and the rest filed there.
    bool unchanged(std::size_t slot, const std::optional<Digest>& whole, const Digest& head) const {
        return slot < held_.size() && held_[slot] &&
               (held_[slot] == whole ||
                (held_[slot] == head && order_[slot]->filedAt(version_.get(), slot)));
    }

    // This store's part of a save: which records go where, encoded straight into the journal
    // or the whole new file.
    void plan(SaveBatch& batch) {
        SaveTarget* target = batch.open(fileName, stamp_, head != nullptr,
                                        [this](const FileStamp& stamp) { committed(stamp); });
        if (target == nullptr)
            return;
        if (!target->inPlace())
            held_.clear();
        const std::size_t before = held_.size();
        const std::size_t count = order_.size();
        std::vector<Digest> digests;
        digests.reserve(count);
        std::vector<bool> changes(count);
        std::uint64_t changed = 0;
        for (std::size_t i = 0; i < count; i++) {
            const std::optional<Digest> whole = order_[i]->digest();
            const Digest head = order_[i]->headDigest();
            digests.push_back(whole.value_or(head));
            changes[i] = !unchanged(i, whole, head);
            changed += changes[i] ? Record::kFileSize : 0;
        }
        const std::uint64_t length = count * std::uint64_t{Record::kFileSize};
        // Writing half the file in place costs as much as all of it once the journal has it too;
        // a link or a second name in the file's place is written in place all the same.
        const bool mostly = !target->inPlace() || (2 * changed >= length && changed > 0);
        if (target->direct() || (target->replaceable() && mostly))
            writeWhole(*target);
        else
            writeChanged(batch, *target, before, changes);
        target->setLength(length);
        held_.assign(digests.begin(), digests.end());
    }

    void writeWhole(SaveTarget& target) {
        target.startWhole();
        for (std::size_t i = 0; i < order_.size(); i++)
            encode(i, target.next(Record::kFileSize));
    }

    void encode(std::size_t index, unsigned char* block) const {
        if (!order_[index]->encode(block, index + 1 == order_.size()))
            DataReport::fail("could not save %s: another program changed it while it was open "
                             "here, and what was left to read of it is gone",
                             fileName);
    }

    // The file now holds every record at its position, as the save encoded them.
    void committed(const FileStamp& stamp) {
        stamp_ = stamp;
        version_ = FileVersion::reopen(fileName, stamp);
        if (!version_)
            return;
        version_->readThrough(reads_);
        for (std::size_t i = 0; i < order_.size(); i++)
            order_[i]->file(version_, i);
    }

    void writeChanged(SaveBatch& batch, SaveTarget& target, std::size_t before,
                      const std::vector<bool>& changes) {
        const std::size_t count = order_.size();
        for (std::size_t i = 0; i < count; i++) {
            const bool last = i + 1 == count;
            const std::uint64_t offset = i * std::uint64_t{Record::kFileSize};
            if (changes[i])
                encode(i, batch.write(target, offset, Record::kFileSize));
            else if (last != (i + 1 == before))
                FieldCodec::putLink(
                    batch.write(target, offset + Record::kLinkAt, FieldCodec::kLinkSize), last);
        }
    }

    // The records in list order, so that count and at need no walk.
    std::vector<Record*> order_;
    // Per position of the file, the digest of the record it holds: of all of it when the record
    // there had all in memory, else of its head, the rest being filed there; none where the file
    // holds it other than as a save writes it.
    std::vector<std::optional<Digest>> held_;
    // The file as last loaded or written, or what stood in its place when it could not be
    // opened; a save finding anything else writes it whole.
    FileStamp stamp_;
    // That file held open, while it is still what the records were loaded from or written to.
    std::shared_ptr<FileVersion> version_;
    std::shared_ptr<FolderReads> reads_;
    // The batch of the folder's change under way, if any.
    SaveBatch* batch_ = nullptr;
};

#endif
