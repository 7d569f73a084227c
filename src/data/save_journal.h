// The journal that makes a save atomic against a crash, ".pindle_save.journal" in the data
// folder. A save writes into it everything it will do to the data files (byte ranges to write in
// place, new lengths, whole new files to rename over old ones), makes it durable, and only then
// does it; then removes the journal. A crash before the journal is whole leaves the files as they
// were and a journal that fails its checksum, which is thrown away; a crash after leaves a
// journal that the next opening of the folder carries out again, from the start, to the end.
// Carrying it out twice does no harm. Only the two data files and their ".NAME.new" files are
// ever named in a journal, and a journal naming anything else is refused.
//
// Layout, integers big-endian: "PINDLE-J", version (u32); the names (u8 count, each u16 length
// and bytes); entries, each a tag byte: 'W' file (u8), offset (u64), size (u32), the bytes;
// 'L' file, length (u64); 'R' file: rename ".NAME.new" over NAME; then 'E', the number of
// entries (u64) and a checksum (u64): XXH3-64 over the header, then over each entry in turn,
// each hash the seed of the next.
#ifndef PINDLE_SAVE_JOURNAL_H
#define PINDLE_SAVE_JOURNAL_H

#include "staged_writer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class SaveJournal {
public:
    static constexpr const char* kName = ".pindle_save.journal";

    // A new journal for the data files `names` (each "pindle_todo.db" or "cat.db").
    explicit SaveJournal(std::vector<std::string> names);
    ~SaveJournal();
    SaveJournal(const SaveJournal&) = delete;
    SaveJournal& operator=(const SaveJournal&) = delete;

    // Room for `size` bytes that go to file `file` at `offset`; null once a write failed.
    unsigned char* write(int file, std::uint64_t offset, std::size_t size);
    void setLength(int file, std::uint64_t length);
    void replace(int file);
    bool empty() const { return entries_.empty(); }

    // Writes the journal out and makes it durable, its name included. False on any failure:
    // nothing has been done to the data files then.
    bool commit();

    // Does what the journal says, makes it durable, then removes the journal. False on failure.
    bool apply();

    // Finishes or throws away a journal a crash left in the current directory, and removes any
    // ".NAME.new" file left without one, and reports what it did.
    static void recover();

    // True when there is something for recover() to look at.
    static bool leftOver();

    // ".NAME.new", where a whole new data file is written before it replaces NAME.
    static std::string newFileName(const std::string& name);

private:
    struct Entry {
        char tag;
        int file;
        std::uint64_t offset; // 'W': in the data file; 'L': the length
        std::uint64_t size;   // 'W': the bytes' count
        std::uint64_t at;     // 'W': where the bytes are in the journal
    };
    class Reader;

    SaveJournal(std::vector<std::string> names, int fd, std::vector<Entry> entries);
    unsigned char* append(std::size_t size);
    bool applyToFile(int file);

    std::vector<std::string> names_;
    std::vector<Entry> entries_;
    int fd_;
    std::unique_ptr<StagedWriter> out_;
    std::uint64_t written_;
    std::uint64_t checksum_;
    // The last entry's bytes, hashed once its caller has filled them in.
    unsigned char* unhashed_;
    std::size_t unhashedSize_;
};

#endif
