// Fuzz target for saves in place: the input is a run of operations on one store, its first byte
// choosing the to-do or the category store, then five bytes per operation (which one, and its
// argument), every save held to the checks of the save sequence.
#include "fuzz_check.h"
#include "support/save_sequence.h"

#include <cstddef>
#include <cstdint>
#include <fstream>

namespace {

template <class Store>
void run(const std::uint8_t* data, std::size_t size, int maxCount, const char* file) {
    std::ofstream(file, std::ios::binary | std::ios::trunc); // an empty file loads without a word
    SaveSequence::Run<Store> sequence(maxCount);
    for (std::size_t i = 0; i + 5 <= size; i += 5) {
        const std::uint8_t* b = data + i + 1;
        auto arg =
            std::uint32_t{b[0]} << 24 | std::uint32_t{b[1]} << 16 | std::uint32_t{b[2]} << 8 | b[3];
        const std::string failure = sequence.step(data[i], arg);
        require(failure.empty(), failure.c_str());
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return enterPrivateFolder();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0 && data[0] % 2 == 0)
        run<TodoStore>(data + 1, size - 1, 8, "pindle_todo.db");
    else if (size > 0)
        run<CategoryStore>(data + 1, size - 1, 64, "cat.db");
    return 0;
}
