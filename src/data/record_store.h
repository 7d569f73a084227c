// The list-and-file machinery shared by the to-do and category stores: heap records in file
// order, linked and indexed by position, loaded once and rewritten whole on every save.
#ifndef PINDLE_RECORD_STORE_H
#define PINDLE_RECORD_STORE_H

#include "staged_writer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

// Record must provide: a default constructor that makes an empty record, a `next` pointer,
// kFileSize, decode(const unsigned char*) and encode(unsigned char*, bool last) const.
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

    // Any position of 0 or below gives the head; running off the end gives null.
    Record* at(int position) const {
        if (position <= 0)
            return head;
        return static_cast<std::size_t>(position) < order_.size() ? order_[position] : nullptr;
    }

    // Rewrites the whole file. An empty list leaves it truncated to nothing; a file that cannot
    // be opened or written while there are records to keep ends the program with status 200.
    void save() {
        file = std::fopen(fileName, "wb");
        if (head == nullptr) {
            if (file != nullptr)
                std::fclose(file);
            return;
        }
        if (file == nullptr) {
            std::fprintf(stderr, "could not open file %s\n", fileName);
            std::exit(200);
        }
        // Written through the descriptor, unbuffered by stdio, so no failure can hide in a
        // buffer until fclose.
        StagedWriter out(fileno(file));
        for (const Record* r : order_) {
            unsigned char* block = out.next(Record::kFileSize);
            if (block == nullptr)
                failWrite();
            r->encode(block, r->next == nullptr);
        }
        if (!out.finish())
            failWrite();
        std::fclose(file);
    }

protected:
    explicit RecordStore(const char* name) : fileName{}, file(nullptr), head(nullptr) {
        std::snprintf(fileName, sizeof fileName, "%s", name);
    }
    RecordStore(const RecordStore&) = delete;
    RecordStore& operator=(const RecordStore&) = delete;
    // Records live until the program ends; a store is never torn down while it runs.
    ~RecordStore() = default;

    [[noreturn]] static void failWrite() {
        std::fprintf(stderr, "could not write records!\n");
        std::exit(200);
    }

    // Returns false when the file could not be opened (reported on stderr). A trailing partial
    // record is dropped without a word; the link slot in the file is never looked at.
    bool load() {
        file = std::fopen(fileName, "rb");
        if (file == nullptr) {
            std::fprintf(stderr, "could not open file %s\n", fileName);
            std::fprintf(stderr, "skipping over reading record\n");
            return false;
        }
        unsigned char block[Record::kFileSize];
        while (!std::feof(file)) {
            if (std::fread(block, Record::kFileSize, 1, file) != 1)
                break;
            Record* record = new Record;
            record->decode(block);
            record->next = nullptr;
            append(record);
        }
        std::fclose(file);
        return true;
    }

private:
    // The records in list order, so that count and at need no walk.
    std::vector<Record*> order_;
};

#endif
