// Saves in place: long random runs of changes, saves, reloads and changes made by others, each
// save checked against the whole encoding and the bytes it had to write (an edit that only moves
// bytes from one text to the next among them).
#include "support/save_sequence.h"
#include "support/store_helpers.h"
#include "support/temp_dir.h"

#include <chrono>
#include <random>
#include <thread>

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

// As a tab switch without change: no byte written (the random runs hold every save to that), yet
// the time moves as a rewrite moves it.
TEST_F(InPlaceSave, UnchangedSaveMovesTheModificationTime) {
    ScopedStore<CategoryStore> store;
    store.save();
    struct stat first {
    }, second{};
    stat("cat.db", &first);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    store.save();
    stat("cat.db", &second);
    EXPECT_EQ(second.st_ino, first.st_ino);
    EXPECT_NE(second.st_mtim.tv_nsec + second.st_mtim.tv_sec * 1000000000LL,
              first.st_mtim.tv_nsec + first.st_mtim.tv_sec * 1000000000LL);
}

} // namespace
