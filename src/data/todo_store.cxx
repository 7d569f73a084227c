// The to-do record's file layout and the to-do store.
#include "todo_store.h"

#include "field_codec.h"

#include <cstring>

namespace {
constexpr std::size_t kCompletedAt = 16;
constexpr std::size_t kCategoryAt = 17;
constexpr std::size_t kDescriptionAt = 67;
constexpr std::size_t kNotesAt = 117;
} // namespace

// The record's text fields must sit where the file has them, relative to the record start.
static_assert(offsetof(TodoRecord, category) == kCategoryAt, "category offset");
static_assert(offsetof(TodoRecord, description) == kDescriptionAt, "description offset");
static_assert(offsetof(TodoRecord, notes) == kNotesAt, "notes offset");

TodoRecord::TodoRecord() : month(0), day(0), year(0), priority(0), completed(0), next(nullptr) {
    category[0] = '\0';
    description[0] = '\0';
    notes[0] = '\0';
}

char* TodoRecord::textField(std::size_t offset) {
    return reinterpret_cast<char*>(this) + offset;
}

const char* TodoRecord::textEnd() const {
    return notes + sizeof notes;
}

void TodoRecord::setCategory(const char* text) {
    FieldCodec::copyBounded(textField(kCategoryAt), text, textEnd());
}

void TodoRecord::setDescription(const char* text) {
    FieldCodec::copyBounded(textField(kDescriptionAt), text, textEnd());
}

void TodoRecord::setNotes(const char* text) {
    FieldCodec::copyBounded(textField(kNotesAt), text, textEnd());
}

bool TodoRecord::decode(const unsigned char* block) {
    month = FieldCodec::getInt32(block);
    day = FieldCodec::getInt32(block + 4);
    year = FieldCodec::getInt32(block + 8);
    priority = FieldCodec::getInt32(block + 12);
    completed = block[kCompletedAt];
    std::memcpy(textField(kCategoryAt), block + kCategoryAt, kNotesAt - kCategoryAt);
    // The notes only up to their terminator: nothing reads past it, and the rest of the record's
    // memory, most of it for short notes, is then never touched. They must end inside the
    // record, whatever the file held.
    const auto* notesEnd =
        static_cast<const unsigned char*>(std::memchr(block + kNotesAt, 0, sizeof notes));
    std::size_t used = notesEnd != nullptr
                           ? static_cast<std::size_t>(notesEnd - (block + kNotesAt)) + 1
                           : sizeof notes;
    std::memcpy(notes, block + kNotesAt, used);
    notes[used - 1] = '\0';
    // The notes and the padding after them are padded as one field, the notes' NUL ending both.
    return notesEnd != nullptr && FieldCodec::isPadded(block + kCategoryAt, sizeof category) &&
           FieldCodec::isPadded(block + kDescriptionAt, sizeof description) &&
           FieldCodec::isPadded(block + kNotesAt, kLinkAt - kNotesAt);
}

void TodoRecord::putNumbers(unsigned char* block) const {
    FieldCodec::putInt32(block, month);
    FieldCodec::putInt32(block + 4, day);
    FieldCodec::putInt32(block + 8, year);
    FieldCodec::putInt32(block + 12, priority);
    block[kCompletedAt] = completed;
}

void TodoRecord::encode(unsigned char* block, bool last) const {
    putNumbers(block);
    FieldCodec::putText(block + kCategoryAt, category, sizeof category);
    FieldCodec::putText(block + kDescriptionAt, description, sizeof description);
    FieldCodec::putText(block + kNotesAt, notes, sizeof notes);
    std::memset(block + kNotesAt + sizeof notes, 0, kLinkAt - kNotesAt - sizeof notes);
    FieldCodec::putLink(block + kLinkAt, last);
}

// The texts packed one after another: each ends at its terminator (or runs its full size), so
// no two records that encode differently pack alike.
Digest TodoRecord::digest() const {
    unsigned char packed[kFileSize];
    putNumbers(packed);
    std::size_t used = kCategoryAt;
    used += FieldCodec::putSignificant(packed + used, category, sizeof category);
    used += FieldCodec::putSignificant(packed + used, description, sizeof description);
    used += FieldCodec::putSignificant(packed + used, notes, sizeof notes);
    return Digest::of(packed, used);
}

TodoStore::TodoStore() : RecordStore("pindle_todo.db") {
    load();
}

void TodoStore::reload() {
    reloadFile();
}

void TodoStore::purgeCompleted() {
    removeIf([](const TodoRecord& r) { return r.completed != 0; });
}
