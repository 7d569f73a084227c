// Saves in place: long random runs of changes, saves, reloads and changes made by others, each
// save checked against the whole encoding and the bytes it had to write.
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

// As a tab switch without change: no byte written, yet the time moves as a rewrite moves it.
TEST_F(InPlaceSave, UnchangedSaveWritesNothingButMovesTheModificationTime) {
    ScopedStore<CategoryStore> store;
    store.save();
    struct stat first {
    }, second{};
    stat("cat.db", &first);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    long long before = SaveSequence::writtenBytes();
    store.save();
    EXPECT_EQ(SaveSequence::writtenBytes() - before, 0);
    stat("cat.db", &second);
    EXPECT_EQ(second.st_ino, first.st_ino);
    EXPECT_NE(second.st_mtim.tv_nsec + second.st_mtim.tv_sec * 1000000000LL,
              first.st_mtim.tv_nsec + first.st_mtim.tv_sec * 1000000000LL);
}

// A save writes a record when its digest changed; an edit that only moves bytes from one text
// to the next must change it too, or the file would keep the old texts.
TEST_F(InPlaceSave, AnEditThatOnlyMovesBytesBetweenTextsIsSaved) {
    const std::pair<TodoFields, TodoFields> edits[] = {
        {{1, 1, 2030, 0, 0, "ab", "c", ""}, {1, 1, 2030, 0, 0, "a", "bc", ""}},
        {{1, 1, 2030, 0, 0, "a", "b", "c"}, {1, 1, 2030, 0, 0, "a", "", "bc"}},
        {{1, 1, 2030, 0, 0, "", "", "x"}, {1, 1, 2030, 0, 0, "", "x", ""}},
    };
    for (const auto& [before, after] : edits) {
        writeFile("pindle_todo.db", todoFile({before}));
        {
            ScopedStore<TodoStore> store;
            TodoRecord* r = store.at(0);
            r->setCategory(after.category.c_str());
            r->setDescription(after.description.c_str());
            r->setNotes(after.notes.c_str());
            store.save();
        }
        EXPECT_TRUE(readFile("pindle_todo.db") == todoFile({after})) << after.description;
    }
}

} // namespace
