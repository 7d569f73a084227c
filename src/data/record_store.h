// The list-and-file machinery shared by the to-do and category stores: heap records in file
// order, linked and indexed by position, loaded once and saved in place: each save writes only
// the records that differ from what the file holds, which the store knows by their digests.
#ifndef PINDLE_RECORD_STORE_H
#define PINDLE_RECORD_STORE_H

#include "data_file.h"
#include "data_report.h"
#include "digest.h"
#include "field_codec.h"
#include "file_stamp.h"
#include "save_batch.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

// Record must provide: a default constructor that makes an empty record, a `next` pointer,
// kFileSize, kLinkAt (where its link slot lies), bool decode(const unsigned char*) (true when
// the block is as encode writes it, link slot aside), encode(unsigned char*, bool last) const
// and digest() const, a digest of what encode writes apart from the link slot.
template <class Record> class RecordStore {
public:
    char fileName[256];
    std::FILE* file;
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
        const Digest wanted = like.digest();
        auto holds = [&](int at) { return at >= 0 && at < size && order_[at]->digest() == wanted; };
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

protected:
    explicit RecordStore(const char* name) : fileName{}, file(nullptr), head(nullptr) {
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
        return load();
    }

    // Returns false when the file could not be opened, a pipe or a socket in its place
    // included (reported). Reads the whole records the file held when it was opened:
    // a trailing partial record is dropped without a word, and a device, which has no size,
    // gives none rather than reading for ever. No link slot is taken for a link. A record the
    // file holds other than as a save would write it (bytes after a terminator, another link
    // value) is remembered as unknown, so the first save writes it.
    bool load() {
        const int fd = DataFile::open(fileName, O_RDONLY);
        file = fd >= 0 ? fdopen(fd, "rb") : nullptr;
        if (file == nullptr) {
            if (fd >= 0)
                close(fd);
            DataReport::unreadable(fileName);
            stamp_ = FileStamp::of(fileName);
            return false;
        }
        struct stat opened {};
        fstat(fileno(file), &opened);
        const auto records = static_cast<std::size_t>(opened.st_size) / Record::kFileSize;
        unsigned char block[Record::kFileSize];
        unsigned char link[FieldCodec::kLinkSize];
        for (std::size_t read = 0; read < records && !std::feof(file); read++) {
            if (std::fread(block, Record::kFileSize, 1, file) != 1)
                break;
            Record* record = new Record;
            bool asSaved = record->decode(block);
            record->next = nullptr;
            append(record);
            FieldCodec::putLink(link, order_.size() == records);
            asSaved = asSaved && std::memcmp(link, block + Record::kLinkAt, sizeof link) == 0;
            held_.push_back(asSaved ? std::optional<Digest>(record->digest()) : std::nullopt);
        }
        // A file that changed while it was read is not known to hold what was loaded.
        struct stat closing {};
        fstat(fileno(file), &closing);
        if (held_.size() == records && FileStamp(opened).matches(closing))
            stamp_ = FileStamp(closing);
        std::fclose(file);
        return true;
    }

private:
    // This store's part of a save: which records go where, encoded straight into the journal
    // or the whole new file.
    void plan(SaveBatch& batch) {
        SaveTarget* target = batch.open(fileName, stamp_, head != nullptr, &stamp_);
        if (target == nullptr)
            return;
        if (!target->inPlace())
            held_.clear();
        const std::size_t before = held_.size();
        const std::size_t count = order_.size();
        std::vector<Digest> digests;
        digests.reserve(count);
        std::uint64_t changed = 0;
        for (std::size_t i = 0; i < count; i++) {
            digests.push_back(order_[i]->digest());
            if (i >= before || held_[i] != digests[i])
                changed += Record::kFileSize;
        }
        const std::uint64_t length = count * std::uint64_t{Record::kFileSize};
        // Writing half the file in place costs as much as all of it once the journal has it too;
        // a link or a second name in the file's place is written in place all the same.
        const bool mostly = !target->inPlace() || (2 * changed >= length && changed > 0);
        if (target->direct() || (target->replaceable() && mostly))
            writeWhole(*target);
        else
            writeChanged(batch, *target, before, digests);
        target->setLength(length);
        held_.assign(digests.begin(), digests.end());
    }

    void writeWhole(SaveTarget& target) {
        target.startWhole();
        for (std::size_t i = 0; i < order_.size(); i++)
            order_[i]->encode(target.next(Record::kFileSize), i + 1 == order_.size());
    }

    void writeChanged(SaveBatch& batch, SaveTarget& target, std::size_t before,
                      const std::vector<Digest>& digests) {
        const std::size_t count = order_.size();
        for (std::size_t i = 0; i < count; i++) {
            const bool last = i + 1 == count;
            const std::uint64_t offset = i * std::uint64_t{Record::kFileSize};
            if (i >= before || held_[i] != digests[i])
                order_[i]->encode(batch.write(target, offset, Record::kFileSize), last);
            else if (last != (i + 1 == before))
                FieldCodec::putLink(
                    batch.write(target, offset + Record::kLinkAt, FieldCodec::kLinkSize), last);
        }
    }

    // The records in list order, so that count and at need no walk.
    std::vector<Record*> order_;
    // Per position of the file, the digest of the record it holds; none where that is unknown.
    std::vector<std::optional<Digest>> held_;
    // The file as last loaded or written, or what stood in its place when it could not be
    // opened; a save finding anything else writes it whole.
    FileStamp stamp_;
    // The batch of the folder's change under way, if any.
    SaveBatch* batch_ = nullptr;
};

#endif
