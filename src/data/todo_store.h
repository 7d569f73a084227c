// The to-do records and their store: the in-memory list and the "pindle_todo.db" file of
// headerless 32124-byte big-endian records. Knows nothing of the screen.
#ifndef PINDLE_TODO_STORE_H
#define PINDLE_TODO_STORE_H

#include "digest.h"
#include "record_store.h"

#include <cstddef>

struct TodoRecord {
    static constexpr std::size_t kFileSize = 32124;
    static constexpr std::size_t kLinkAt = 32120;
    // The notes field holds this many characters and its terminator.
    static constexpr int kNotesMax = 31999;

    int month;
    int day;
    int year;
    int priority; // 0-based: the list shows priority + 1
    unsigned char completed;
    // The three text fields lie back to back, as in the file: a full-length category or
    // description has its terminator in the next field, which its own copy then overwrites.
    char category[50];
    char description[50];
    char notes[32000];
    TodoRecord* next;

    // An empty record: numbers zero, strings empty, no successor. Nothing else is cleared.
    TodoRecord();

    // Copies are bounded by the end of the notes, never by the field alone, so that a name or
    // description runs on into the next field as typed but never out of the record.
    void setCategory(const char* text);
    void setDescription(const char* text);
    void setNotes(const char* text);

    // True when the block is exactly what encode writes for the record, but for the link slot.
    bool decode(const unsigned char* block);
    void encode(unsigned char* block, bool last) const;
    // Of every byte encode writes but the zeros after terminators, the padding and the link.
    Digest digest() const;

private:
    void putNumbers(unsigned char* block) const;
    char* textField(std::size_t offset);
    const char* textEnd() const;
};

class TodoStore : public RecordStore<TodoRecord> {
public:
    // Loads "pindle_todo.db" from the current directory.
    TodoStore();

    // Removes and frees every completed record; the rest keep their order. Does not save.
    void purgeCompleted();

    // Frees every record and loads the file again, as the constructor does.
    void reload();
};

#endif
