// Saves through the staged writer: a file holds exactly the bytes that writing every encoded
// record in order gives, and a save that fails stops where that plain write would have.
#include "support/store_helpers.h"
#include "support/temp_dir.h"
#include "todo_store.h"

#include <csignal>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

namespace {

using StagedSave = TempDirTest;
using Todos = ScopedStore<TodoStore>;

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

// Short texts and empty notes as people type them, now and then notes of any length up to
// full, and leftovers behind the terminators in memory.
void fill(TodoStore& store, unsigned seed, int records) {
    std::mt19937 random(seed);
    for (int i = 0; i < records; i++) {
        auto* r = new TodoRecord;
        std::memset(r->notes, 'x', sizeof r->notes);
        r->month = static_cast<int>(random());
        r->completed = random() % 4 == 0 ? 1 : 0;
        r->setDescription(std::string(random() % 60, static_cast<char>('a' + i % 26)).c_str());
        std::size_t notes = random() % 3 == 0 ? random() % 32000 : 0;
        r->setNotes(std::string(notes, 'n').c_str());
        store.append(r);
    }
}

TEST_F(StagedSave, FilesHoldThePlainBytesAlsoOverALongerFile) {
    for (int records : {1, 9, 600}) {
        writeFile("pindle_todo.db", std::string((records + 5) * 32124u, 'o'));
        Todos store;
        store.clear();
        fill(store, static_cast<unsigned>(records), records);
        store.save();
        ASSERT_TRUE(readFile("pindle_todo.db") == plainBytes(store)) << records;
    }
}

// A pipe takes the bytes as they come, in several writes.
TEST_F(StagedSave, APipeGetsEveryByte) {
    Todos store; // loads first: opening the pipe to read would wait for a writer
    fill(store, 11, 12);
    ASSERT_EQ(mkfifo("pindle_todo.db", 0600), 0);
    std::string received;
    std::thread reader([&received] { received = readFile("pindle_todo.db"); });
    store.save();
    reader.join();
    EXPECT_TRUE(received == plainBytes(store));
}

using StagedSaveDeath = StagedSave;

// Limits in text, in zeros, on stage edges and on the very last byte. None is below 100
// bytes: the limit also applies to the file where the test catches the message.
TEST_F(StagedSaveDeath, AFailedSaveStopsWhereAPlainWriteWould) {
    Todos store;
    fill(store, 3, 3);
    const std::string plain = plainBytes(store);
    for (rlim_t limit : {100, 4096, 32124, 64249, 96371}) {
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
