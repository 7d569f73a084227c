// Fuzz target for saves in place: the input is a run of operations on one store, its first byte
// choosing the to-do or the category store, then five bytes per operation (which one, and its
// argument), every save held to the checks of the save sequence.
#include "fuzz_harness.h"
#include "support/save_sequence.h"

#include <cstddef>
#include <cstdint>

namespace {

template <class Store>
void run(const std::uint8_t* data, std::size_t size, int maxCount, const char* file) {
    FuzzHarness::writeFile(file, data, 0); // an empty file loads without a word
    SaveSequence::Run<Store> sequence(maxCount);
    for (std::size_t i = 0; i + 5 <= size; i += 5) {
        auto arg = static_cast<std::uint32_t>(FuzzHarness::readBigEndian(data + i + 1));
        std::string failure = sequence.step(data[i], arg);
        FuzzHarness::require(failure.empty(), failure.c_str());
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    FuzzHarness::enterPrivateDir(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0 && data[0] % 2 == 0)
        run<TodoStore>(data + 1, size - 1, 8, "pindle_todo.db");
    else if (size > 0)
        run<CategoryStore>(data + 1, size - 1, 64, "cat.db");
    return 0;
}
