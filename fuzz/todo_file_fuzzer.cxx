// Fuzz target for the to-do file, the larger and richer of the two loaders on the shared record
// store: whatever "pindle_todo.db" holds loads as its whole records (numbers as read, each text
// up to its end, the notes cut to end inside the record), and a save leaves each record either
// as the file held it or as the layout describes it (zeros after each text), and loads again as
// the same records. A record is rewritten when what a load reads of it is other than a save
// writes; past that, a record never read whole stays as it was.
#include "fuzz_check.h"
#include "support/store_helpers.h"
#include "todo_store.h"

#include <cstring>
#include <fstream>
#include <tuple>

namespace {

std::int32_t number(const std::uint8_t* b) {
    return static_cast<std::int32_t>(std::uint32_t{b[0]} << 24 | std::uint32_t{b[1]} << 16 |
                                     std::uint32_t{b[2]} << 8 | b[3]);
}

// A text as a loader keeps it: up to its first zero, and at most `most` bytes. A full category
// or description runs on, but its own field holds its 50 bytes.
std::string text(const std::uint8_t* field, std::size_t most) {
    const char* start = reinterpret_cast<const char*>(field);
    return {start, strnlen(start, most)};
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return enterPrivateFolder();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::ofstream("pindle_todo.db", std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    std::vector<TodoFields> expected;
    for (std::size_t at = 0; at + TodoRecord::kFileSize <= size; at += TodoRecord::kFileSize) {
        const std::uint8_t* r = data + at;
        expected.push_back({number(r), number(r + 4), number(r + 8), number(r + 12), r[16],
                            text(r + 17, 50), text(r + 67, 50), text(r + 117, 31999)});
    }
    ScopedStore<TodoStore> loaded;
    require(loaded.count() == static_cast<int>(expected.size()), "not every whole record loaded");
    loaded.save();
    const std::string saved = readFile("pindle_todo.db");
    const std::string layout = todoFile(expected);
    require(saved.size() == layout.size(), "the saved file is not of whole records");
    const std::size_t record = TodoRecord::kFileSize;
    for (std::size_t at = 0; at < saved.size(); at += record) {
        require(saved.compare(at, record, layout, at, record) == 0 ||
                    saved.compare(at, record, reinterpret_cast<const char*>(data) + at, record) ==
                        0,
                "a saved record is neither the file's nor the layout's");
    }
    ScopedStore<TodoStore> again;
    for (std::size_t i = 0; i < expected.size(); i++) {
        const TodoRecord* r = again.at(static_cast<int>(i));
        const TodoFields& e = expected[i];
        require(std::tie(r->month, r->day, r->year, r->priority, r->completed) ==
                        std::tie(e.month, e.day, e.year, e.priority, e.completed) &&
                    text(reinterpret_cast<const std::uint8_t*>(r->category), 50) == e.category &&
                    text(reinterpret_cast<const std::uint8_t*>(r->description), 50) ==
                        e.description &&
                    r->notes() == e.notes,
                "the saved records load as others");
    }
    return 0;
}
