// Fuzz target for the category file: whatever "cat.db" holds loads as its whole records and saves
// as the names up to their ends, cut to 51 bytes, with zeros after them; saving what was loaded
// again changes nothing.
#include "category_store.h"
#include "fuzz_harness.h"
#include "support/store_helpers.h"

using namespace FuzzHarness;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    enterPrivateDir();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    writeFile("cat.db", data, size);
    std::vector<std::string> expected;
    for (std::size_t at = 0; at + CategoryRecord::kFileSize <= size;
         at += CategoryRecord::kFileSize)
        expected.push_back(text(data + at, 51));
    ScopedStore<CategoryStore> loaded;
    require(loaded.count() == static_cast<int>(expected.size()), "not every whole record loaded");
    loaded.save();
    std::string saved = readFile("cat.db");
    require(saved == categoryFile(expected), "saved records differ from the layout's");
    ScopedStore<CategoryStore> reloaded;
    reloaded.save();
    require(readFile("cat.db") == saved, "a second load and save changed the file");
    return 0;
}
