// Saves through the staged writer: a save that fails stops where writing every encoded record
// in order would have, so the file holds what went out before the failure.
#include "support/store_helpers.h"
#include "support/temp_dir.h"
#include "todo_store.h"

#include <csignal>
#include <sys/resource.h>

namespace {

using StagedSave = TempDirTest;

// The straightforward save, for comparison: every record encoded and written, zeros and all.
std::string plainBytes(const TodoStore& store) {
    std::string bytes;
    std::vector<unsigned char> block(TodoRecord::kFileSize);
    for (int i = 0; i < store.count(); i++) {
        store.at(i)->encode(block.data(), i + 1 == store.count());
        bytes.append(reinterpret_cast<const char*>(block.data()), block.size());
    }
    return bytes;
}

// Notes of many lengths, with leftovers behind the terminators in memory: eleven records,
// more than the stage holds.
void fill(TodoStore& store) {
    for (std::size_t notes = 0; notes < 32000; notes += 3001) {
        auto* r = new TodoRecord;
        std::memset(r->notes, 'x', sizeof r->notes);
        r->setNotes(std::string(notes, 'n').c_str());
        store.append(r);
    }
}

using StagedSaveDeath = StagedSave;

// Limits in text, in zeros, on a record's edge, in the second stage and on the very last
// byte. None is below 100 bytes: the limit also applies to the file where the test catches the
// message.
TEST_F(StagedSaveDeath, AFailedSaveStopsWhereAPlainWriteWould) {
    ScopedStore<TodoStore> store;
    fill(store);
    const std::string plain = plainBytes(store);
    for (rlim_t limit : {100, 4096, 32124, 300000, 353363}) {
        std::filesystem::remove("pindle_todo.db");
        auto limitedSave = [&store, limit] {
            std::signal(SIGXFSZ, SIG_IGN);
            rlimit cap{limit, limit};
            setrlimit(RLIMIT_FSIZE, &cap);
            store.save();
        };
        EXPECT_EXIT(limitedSave(), testing::ExitedWithCode(200), "^could not write records!\n$")
            << limit;
        EXPECT_TRUE(readFile("pindle_todo.db") == plain.substr(0, limit)) << limit;
    }
}

} // namespace
