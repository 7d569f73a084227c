// Fuzz target for the to-do file: whatever "pindle_todo.db" holds must load as its whole records,
// save as well-formed 32124-byte records, and load again to the same to-dos.
#include "fuzz_harness.h"
#include "support/store_helpers.h"
#include "todo_store.h"

#include <cstddef>
#include <cstdint>

namespace {

using namespace FuzzHarness;
using Store = ScopedStore<TodoStore>;

constexpr std::size_t kRecordSize = TodoRecord::kFileSize;
constexpr std::size_t kLinkAt = 32120;

// The text fields where the file has them. Only the notes are cut to end inside the record; a
// full-length category or description is kept whole.
struct TextField {
    std::size_t at;
    std::size_t size;
    bool mustEnd;
    const char* (*of)(const TodoRecord&);
};
const TextField kTextFields[] = {
    {17, 50, false, [](const TodoRecord& r) -> const char* { return r.category; }},
    {67, 50, false, [](const TodoRecord& r) -> const char* { return r.description; }},
    {117, 32000, true, [](const TodoRecord& r) -> const char* { return r.notes; }},
};

std::string textOf(const TodoRecord& r, const TextField& f) {
    return significant(f.of(r), f.size);
}

bool sameNumbers(const TodoRecord& r, const unsigned char* block) {
    return r.month == readBigEndian(block) && r.day == readBigEndian(block + 4) &&
           r.year == readBigEndian(block + 8) && r.priority == readBigEndian(block + 12) &&
           r.completed == block[16];
}

void requireLoadedFrom(const TodoRecord& r, const unsigned char* block) {
    require(sameNumbers(r, block), "loaded numbers differ from the file");
    for (const TextField& f : kTextFields)
        require(textOf(r, f) == loadedField(block + f.at, f.size, f.mustEnd),
                "loaded text field differs from the file");
}

// A saved record holds each field's significant bytes then zeros, three zero pad bytes, and a
// link slot that is zero in the last record only.
void requireSavedAs(const TodoRecord& r, const unsigned char* block, bool last) {
    const char* bytes = reinterpret_cast<const char*>(block);
    require(sameNumbers(r, block), "saved numbers differ from the record");
    for (const TextField& f : kTextFields)
        require(std::string(bytes + f.at, f.size) == field(textOf(r, f), f.size),
                "saved text field is not the record's followed by zeros");
    require(std::string(bytes + kLinkAt - 3, 3) == std::string(3, '\0'),
            "saved pad bytes are not zero");
    require((readBigEndian(block + kLinkAt) == 0) == last,
            "saved link slot is zero somewhere other than the last record");
}

void requireSameRecord(const TodoRecord& a, const TodoRecord& b) {
    require(a.month == b.month && a.day == b.day && a.year == b.year && a.priority == b.priority &&
                a.completed == b.completed,
            "reloaded numbers differ");
    for (const TextField& f : kTextFields)
        require(textOf(a, f) == textOf(b, f), "reloaded text field differs");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    enterPrivateDir(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    writeFile("pindle_todo.db", data, size);
    Store loaded;
    const std::size_t records = size / kRecordSize;
    require(static_cast<std::size_t>(loaded.count()) == records,
            "record count is not the number of whole records in the file");
    std::size_t i = 0;
    for (const TodoRecord* r = loaded.head; r != nullptr; r = r->next, i++)
        requireLoadedFrom(*r, data + i * kRecordSize);

    loaded.save();
    const std::string saved = readFile("pindle_todo.db");
    require(saved.size() == records * kRecordSize, "saved file is not whole records");
    const auto* out = reinterpret_cast<const unsigned char*>(saved.data());
    i = 0;
    for (const TodoRecord* r = loaded.head; r != nullptr; r = r->next, i++)
        requireSavedAs(*r, out + i * kRecordSize, r->next == nullptr);

    Store reloaded;
    require(reloaded.count() == loaded.count(), "reloaded record count differs");
    for (const TodoRecord *a = loaded.head, *b = reloaded.head; a != nullptr;
         a = a->next, b = b->next)
        requireSameRecord(*a, *b);
    return 0;
}
