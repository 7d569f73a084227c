// Fuzz target for the to-do file: whatever "pindle_todo.db" holds loads as its whole records and
// saves as the records the layout describes (numbers as read, each text up to its end, the notes
// cut to end inside the record, zeros after them); saving what was loaded again changes nothing.
#include "fuzz_harness.h"
#include "support/store_helpers.h"
#include "todo_store.h"

using namespace FuzzHarness;

namespace {

std::int32_t number(const std::uint8_t* bytes) {
    return static_cast<std::int32_t>(std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
                                     std::uint32_t{bytes[2]} << 8 | bytes[3]);
}

// A full category or description runs on, but its own field then holds its 50 bytes.
TodoFields fieldsOf(const std::uint8_t* r) {
    return {number(r), number(r + 4),    number(r + 8),    number(r + 12),
            r[16],     text(r + 17, 50), text(r + 67, 50), text(r + 117, 31999)};
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    enterPrivateDir();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    writeFile("pindle_todo.db", data, size);
    std::vector<TodoFields> expected;
    for (std::size_t at = 0; at + TodoRecord::kFileSize <= size; at += TodoRecord::kFileSize)
        expected.push_back(fieldsOf(data + at));
    ScopedStore<TodoStore> loaded;
    require(loaded.count() == static_cast<int>(expected.size()), "not every whole record loaded");
    loaded.save();
    std::string saved = readFile("pindle_todo.db");
    require(saved == todoFile(expected), "saved records differ from the layout's");
    ScopedStore<TodoStore> reloaded;
    reloaded.save();
    require(readFile("pindle_todo.db") == saved, "a second load and save changed the file");
    return 0;
}
