// The list-and-file machinery shared by the to-do and category stores: a singly linked list of
// heap records in file order, loaded once and rewritten whole in place on every save.
#ifndef PINDLE_RECORD_STORE_H
#define PINDLE_RECORD_STORE_H

#include <cstdio>
#include <cstdlib>
#include <cstring>

// Record must provide: a default constructor that makes an empty record, a `next` pointer,
// kFileSize, decode(const unsigned char*) and encode(unsigned char*, bool last) const.
template <class Record> class RecordStore {
public:
    char fileName[256];
    std::FILE* file;
    Record* head;

    // Takes ownership; the caller hands over a record whose next is null.
    void append(Record* record) {
        if (head == nullptr) {
            head = record;
            return;
        }
        Record* tail = head;
        while (tail->next != nullptr)
            tail = tail->next;
        tail->next = record;
    }

    // The record must be in the list. On an empty list nothing happens, not even the free.
    void remove(Record* record) {
        if (head == nullptr)
            return;
        if (head == record) {
            head = record->next;
        } else {
            Record* before = head;
            while (before->next != record)
                before = before->next;
            before->next = record->next;
        }
        delete record;
    }

    int count() const {
        int n = 0;
        for (const Record* r = head; r != nullptr; r = r->next)
            n++;
        return n;
    }

    // Any position of 0 or below gives the head; running off the end gives null.
    Record* at(int position) const {
        Record* r = head;
        for (int i = 0; i < position && r != nullptr; i++)
            r = r->next;
        return r;
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
        // Unbuffered, so every failed byte shows in fwrite's result instead of a late fclose.
        std::setvbuf(file, nullptr, _IONBF, 0);
        unsigned char block[Record::kFileSize];
        for (const Record* r = head; r != nullptr; r = r->next) {
            r->encode(block, r->next == nullptr);
            if (std::fwrite(block, Record::kFileSize, 1, file) != 1) {
                std::fprintf(stderr, "could not write records!\n");
                std::exit(200);
            }
        }
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
};

#endif
