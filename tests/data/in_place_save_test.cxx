// Saves in place: long random runs of changes, saves, reloads and changes made by others, each
// save checked against the whole encoding and the bytes it had to write (an edit that only moves
// bytes from one text to the next among them; an unchanged save writes none, and the main
// window's tab-switch test sees that it moves the modification time all the same).
#include "support/save_sequence.h"
#include "support/store_helpers.h"
#include "support/temp_dir.h"

#include <random>

namespace {

using InPlaceSave = TempDirTest;

template <class Store> void runSeeds(int maxCount, int steps) {
    for (unsigned seed : {1u, 2u, 3u, 4u}) {
        std::mt19937 random(seed);
        SaveSequence::Run<Store> run(maxCount);
        for (int step = 0; step < steps; step++) {
            auto op = static_cast<std::uint8_t>(random());
            ASSERT_EQ(run.step(op, random()), "") << "seed " << seed << ", step " << step;
        }
    }
}

TEST_F(InPlaceSave, RandomRunsMatchTheWholeEncoding) {
    runSeeds<CategoryStore>(200, 25000);
    runSeeds<TodoStore>(16, 3000);
}

} // namespace
