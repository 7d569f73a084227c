// The to-do record's file layout, its notes in memory or in the file, and the to-do store.
#include "todo_store.h"

#include "data_report.h"
#include "field_codec.h"
#include "record_arena.h"
#include "utf8_text.h"

#include <cstring>

namespace {
constexpr std::size_t kCompletedAt = 16;
constexpr std::size_t kCategoryAt = 17;
constexpr std::size_t kDescriptionAt = 67;
constexpr std::size_t kNotesAt = 117;
// The notes and the padding after them, padded as one field: the notes' NUL ends both.
constexpr std::size_t kNotesField = TodoRecord::kLinkAt - kNotesAt;

// Never torn down: records may outlive every other static object.
RecordArena& arena() {
    static auto* records = new RecordArena(sizeof(TodoRecord));
    return *records;
}

// Ends notes read from a file inside their field, as a load always has, and clears what follows
// them; true when nothing had to change.
bool endNotes(unsigned char* field) {
    const bool ended = std::memchr(field, 0, TodoRecord::kNotesMax + 1) != nullptr;
    const bool padded = ended && FieldCodec::isPadded(field, kNotesField);
    field[TodoRecord::kNotesMax] = '\0';
    const std::size_t used = std::strlen(reinterpret_cast<char*>(field)) + 1;
    std::memset(field + used, 0, kNotesField - used);
    return padded;
}
} // namespace

// The record's text fields must sit where the file has them, relative to the record start.
static_assert(offsetof(TodoHead, category) == kCategoryAt, "category offset");
static_assert(offsetof(TodoHead, description) == kDescriptionAt, "description offset");
static_assert(offsetof(TodoHead, notesStart) == kNotesAt, "notes offset");

TodoRecord::TodoRecord() : TodoHead(), next(nullptr), known_(true), slot_(0), filed_(false) {}

void* TodoRecord::operator new(std::size_t size) {
    return size == sizeof(TodoRecord) ? arena().take() : ::operator new(size);
}

void TodoRecord::operator delete(void* record, std::size_t size) noexcept {
    if (size == sizeof(TodoRecord))
        arena().give(record);
    else
        ::operator delete(record);
}

bool TodoRecord::shortNotes() const {
    return std::memchr(notesStart, 0, kNotesKept) != nullptr;
}

void TodoRecord::setCategory(const char* text) {
    setText(kCategoryAt, text);
}

void TodoRecord::setDescription(const char* text) {
    setText(kDescriptionAt, text);
}

void TodoRecord::setNotes(const char* text) {
    setText(kNotesAt, text);
}

// The fields from `at` to the end of the notes are one stretch of text, as in the file.
void TodoRecord::setText(std::size_t at, const char* text) {
    const std::size_t room = kNotesAt + kNotesMax - at;
    const std::size_t length = Utf8Text::fitLength(text, strnlen(text, room + 1), room);
    const std::size_t beforeNotes = kNotesAt - at;
    char* field = reinterpret_cast<char*>(static_cast<TodoHead*>(this)) + at;
    if (length < beforeNotes) {
        std::memmove(field, text, length);
        field[length] = '\0';
        return;
    }
    std::memmove(field, text, beforeNotes);
    putNotes(text + beforeNotes, length - beforeNotes);
}

void TodoRecord::putNotes(const char* text, std::size_t length) {
    const char* now = known_ ? (shortNotes() ? notesStart : notes_.c_str()) : nullptr;
    filed_ = filed_ && now != nullptr && std::strlen(now) == length &&
             std::memcmp(now, text, length) == 0;
    if (length >= kNotesKept)
        notes_.assign(text, length);
    const std::size_t kept = std::min(length, kNotesKept);
    std::memmove(notesStart, text, kept);
    notesStart[kept] = '\0';
    if (length < kNotesKept)
        notes_.clear();
    known_ = true;
}

const char* TodoRecord::notes() const {
    if (!readNotes())
        DataReport::fail("could not read the notes of a to-do: pindle_todo.db was changed by "
                         "another program while it was open here");
    return shortNotes() ? notesStart : notes_.c_str();
}

bool TodoRecord::readNotes() const {
    if (known_)
        return true;
    std::string field(kNotesField, '\0');
    auto* bytes = reinterpret_cast<unsigned char*>(field.data());
    if (!readNotesField(bytes))
        return false;
    filed_ = filed_ && endNotes(bytes);
    notes_.assign(field.c_str());
    known_ = true;
    return true;
}

bool TodoRecord::readNotesField(unsigned char* field) const {
    return version_ && version_->read(slot_ * kFileSize + kNotesAt, field, kNotesField);
}

bool TodoRecord::decode(const unsigned char* head) {
    month = FieldCodec::getInt32(head);
    day = FieldCodec::getInt32(head + 4);
    year = FieldCodec::getInt32(head + 8);
    priority = FieldCodec::getInt32(head + 12);
    completed = head[kCompletedAt];
    std::memcpy(category, head + kCategoryAt, kHeadSize - kCategoryAt);
    notesStart[kNotesKept] = '\0';
    notes_.clear();
    known_ = shortNotes();
    // Past notesStart the record is not read: notes that end there are known to be padded only
    // as far as it goes.
    return FieldCodec::isPadded(head + kCategoryAt, sizeof category) &&
           FieldCodec::isPadded(head + kDescriptionAt, sizeof description) &&
           FieldCodec::isPadded(head + kNotesAt, kNotesKept);
}

void TodoRecord::putNumbers(unsigned char* block) const {
    FieldCodec::putInt32(block, month);
    FieldCodec::putInt32(block + 4, day);
    FieldCodec::putInt32(block + 8, year);
    FieldCodec::putInt32(block + 12, priority);
    block[kCompletedAt] = completed;
}

bool TodoRecord::encode(unsigned char* block, bool last) const {
    putNumbers(block);
    FieldCodec::putText(block + kCategoryAt, category, sizeof category);
    FieldCodec::putText(block + kDescriptionAt, description, sizeof description);
    unsigned char* field = block + kNotesAt;
    if (known_) {
        const char* text = shortNotes() ? notesStart : notes_.c_str();
        const std::size_t used = std::strlen(text) + 1;
        std::memcpy(field, text, used);
        std::memset(field + used, 0, kNotesField - used);
    } else if (readNotesField(field)) {
        endNotes(field);
    } else {
        return false;
    }
    FieldCodec::putLink(block + kLinkAt, last);
    return true;
}

// The texts packed one after another: each ends at its terminator (or runs its full size), so
// no two records that encode differently pack alike, and a record packed with its notes never
// packs like one without.
std::size_t TodoRecord::packHead(unsigned char* packed) const {
    putNumbers(packed);
    std::size_t used = kCategoryAt;
    used += FieldCodec::putSignificant(packed + used, category, sizeof category);
    return used + FieldCodec::putSignificant(packed + used, description, sizeof description);
}

Digest TodoRecord::headDigest() const {
    unsigned char packed[kNotesAt];
    return Digest::of(packed, packHead(packed));
}

std::optional<Digest> TodoRecord::digest() const {
    if (!known_)
        return std::nullopt;
    unsigned char packed[kFileSize];
    std::size_t used = packHead(packed);
    const char* text = shortNotes() ? notesStart : notes_.c_str();
    const std::size_t length = std::strlen(text) + 1;
    std::memcpy(packed + used, text, length);
    return Digest::of(packed, used + length);
}

bool TodoRecord::alike(const TodoRecord& other) const {
    if (filed_ && other.filed_ && version_ && version_ == other.version_ && slot_ == other.slot_)
        return true;
    return readNotes() && other.readNotes() && std::strcmp(notes(), other.notes()) == 0;
}

void TodoRecord::file(const std::shared_ptr<const FileVersion>& version, std::size_t slot) {
    version_ = version;
    slot_ = slot;
    filed_ = true;
}

bool TodoRecord::filedAt(const FileVersion* version, std::size_t slot) const {
    return filed_ && version != nullptr && version_.get() == version && slot_ == slot;
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

bool TodoStore::readAllNotes() const {
    for (int i = 0; i < count(); i++) {
        if (!at(i)->readNotes())
            return false;
    }
    return true;
}
