// Fuzz target for the category file: whatever "cat.db" holds must load as its whole records,
// save as well-formed 56-byte records, and load again to the same names.
#include "category_store.h"
#include "fuzz_harness.h"
#include "support/store_helpers.h"

#include <cstddef>
#include <cstdint>

namespace {

using namespace FuzzHarness;
using Store = ScopedStore<CategoryStore>;

constexpr std::size_t kRecordSize = CategoryRecord::kFileSize;
constexpr std::size_t kNameSize = 52;

std::string nameOf(const CategoryRecord& r) {
    return significant(r.name, kNameSize);
}

// A saved record is the name's significant bytes, zeros, and a link slot that is zero in the
// last record only.
void requireSavedAs(const CategoryRecord& r, const unsigned char* block, bool last) {
    require(std::string(reinterpret_cast<const char*>(block), kNameSize) ==
                field(nameOf(r), kNameSize),
            "saved name is not the record's followed by zeros");
    require((readBigEndian(block + kNameSize) == 0) == last,
            "saved link slot is zero somewhere other than the last record");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    enterPrivateDir(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    writeFile("cat.db", data, size);
    Store loaded;
    const std::size_t records = size / kRecordSize;
    require(static_cast<std::size_t>(loaded.count()) == records,
            "record count is not the number of whole records in the file");
    std::size_t i = 0;
    for (const CategoryRecord* r = loaded.head; r != nullptr; r = r->next, i++)
        require(nameOf(*r) == loadedField(data + i * kRecordSize, kNameSize, true),
                "loaded name differs from the file");

    loaded.save();
    const std::string saved = readFile("cat.db");
    require(saved.size() == records * kRecordSize, "saved file is not whole records");
    const auto* out = reinterpret_cast<const unsigned char*>(saved.data());
    i = 0;
    for (const CategoryRecord* r = loaded.head; r != nullptr; r = r->next, i++)
        requireSavedAs(*r, out + i * kRecordSize, r->next == nullptr);

    Store reloaded;
    require(reloaded.count() == loaded.count(), "reloaded record count differs");
    for (const CategoryRecord *a = loaded.head, *b = reloaded.head; a != nullptr;
         a = a->next, b = b->next)
        require(nameOf(*a) == nameOf(*b), "reloaded name differs");
    return 0;
}
