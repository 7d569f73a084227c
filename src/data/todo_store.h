// The to-do records and their store: the in-memory list and the "pindle_todo.db" file of
// headerless 32124-byte big-endian records. Knows nothing of the screen. A record holds what the
// list shows and where its notes lie; notes longer than the record keeps are read from the very
// version of the file it was loaded from when somebody asks for them.
#ifndef PINDLE_TODO_STORE_H
#define PINDLE_TODO_STORE_H

#include "digest.h"
#include "file_version.h"
#include "record_store.h"
#include "todo_head.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

struct TodoRecord : TodoHead {
    static constexpr std::size_t kFileSize = 32124;
    static constexpr std::size_t kLinkAt = 32120;
    // The notes field holds this many characters and its terminator.
    static constexpr int kNotesMax = 31999;
    // What a load reads of each record: every field but the notes past what notesStart keeps.
    static constexpr std::size_t kHeadSize = 117 + kNotesKept;

    TodoRecord* next;

    // An empty record: numbers zero, strings empty, no successor. Nothing else is cleared.
    TodoRecord();

    // Records live in blocks of their own (see RecordArena), allocated one by one all the same.
    static void* operator new(std::size_t size);
    static void operator delete(void* record, std::size_t size) noexcept;

    // Each copies as if into the file's fields laid end to end: bounded by the end of the notes,
    // never by the field alone, so that a name or description runs on into the next field as
    // typed (a description of 50 characters ends the notes on their first byte) but never out of
    // the record. Cut between characters.
    void setCategory(const char* text);
    void setDescription(const char* text);
    void setNotes(const char* text);

    // The notes, whole, until they are set again. Notes longer than notesStart keeps are read the
    // first time they are asked for, from the version of the file the record was loaded from,
    // under the folder's lock, and kept. Ends the program (status 200) when that version is gone; a
    // caller that may meet that (the window, between another program's save and its own reload)
    // calls readNotes() first.
    const char* notes() const;
    // True once the notes are in memory, read now if need be; false when the version of the file
    // they lie in was changed in place since.
    bool readNotes() const;

    // Loading: `head` is the record's first kHeadSize bytes. True when they are exactly what
    // encode writes there.
    bool decode(const unsigned char* head);
    // The record's whole block; notes not in memory are read into it. False when they cannot be.
    bool encode(unsigned char* block, bool last) const;
    // Of every byte encode writes before the notes, but the zeros after terminators.
    Digest headDigest() const;
    // Of every byte encode writes but the zeros after terminators, the padding and the link;
    // none while the notes are not in memory.
    std::optional<Digest> digest() const;
    // True when the notes are the same as `other`'s: the same bytes of one file version, or equal
    // texts. Notes that cannot be read any more are like none.
    bool alike(const TodoRecord& other) const;

    // The record now stands at position `slot` of `version` (null: of no file still open).
    void file(const std::shared_ptr<const FileVersion>& version, std::size_t slot);
    // True when position `slot` of `version` holds the record's notes as encode writes them.
    bool filedAt(const FileVersion* version, std::size_t slot) const;

private:
    bool shortNotes() const;
    void setText(std::size_t at, const char* text);
    void putNotes(const char* text, std::size_t length);
    bool readNotesField(unsigned char* field) const;
    void putNumbers(unsigned char* block) const;
    std::size_t packHead(unsigned char* packed) const;

    // The notes whole when they are longer than notesStart and in memory.
    mutable std::string notes_;
    // The notes whole are in memory: in notesStart alone when short, else in notes_.
    mutable bool known_;
    // Where the record stands in a file, and whether its notes there are exactly these.
    std::shared_ptr<const FileVersion> version_;
    std::size_t slot_;
    mutable bool filed_;
};

class TodoStore : public RecordStore<TodoRecord> {
public:
    // Loads "pindle_todo.db" from the current directory.
    TodoStore();

    // Removes and frees every completed record; the rest keep their order. Does not save.
    void purgeCompleted();

    // Frees every record and loads the file again, as the constructor does.
    void reload();

    // Brings every record's notes into memory; false when the file changed in place since it was
    // loaded, so that some could not be read.
    bool readAllNotes() const;
};

#endif
