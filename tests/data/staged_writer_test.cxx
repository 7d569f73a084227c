// Saves through the staged writer: a file must hold exactly the bytes that writing every
// encoded record in order gives, and a save that fails must stop where that plain write would.
#include "category_store.h"
#include "support/store_helpers.h"
#include "support/temp_dir.h"
#include "todo_store.h"

#include <csignal>
#include <functional>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace {

using StagedSave = TempDirTest;
using Todos = ScopedStore<TodoStore>;

// The straightforward save, for comparison: every record encoded and written, zeros and all.
template <class Record> std::string plainBytes(const Record* head) {
    std::string bytes;
    std::vector<unsigned char> block(Record::kFileSize);
    for (const Record* r = head; r != nullptr; r = r->next) {
        r->encode(block.data(), r->next == nullptr);
        bytes.append(reinterpret_cast<const char*>(block.data()), block.size());
    }
    return bytes;
}

std::string randomText(std::mt19937& random, std::size_t length) {
    std::string text(length, ' ');
    for (char& c : text)
        c = static_cast<char>(1 + random() % 255);
    return text;
}

// Mostly short text and empty notes, as people type them, with now and then notes of any
// length up to full, and leftovers behind the terminators in memory.
TodoRecord* randomTodo(std::mt19937& random) {
    auto* r = new TodoRecord;
    std::memset(r->notes, 'x', sizeof r->notes);
    r->month = static_cast<int>(random());
    r->day = static_cast<int>(random() % 32);
    r->year = static_cast<int>(random() % 3) - 1;
    r->priority = static_cast<int>(random() % 9);
    r->completed = random() % 4 == 0 ? 1 : 0;
    r->setCategory(randomText(random, random() % 60).c_str());
    r->setDescription(randomText(random, random() % 60).c_str());
    std::size_t notes = 0;
    switch (random() % 10) {
    case 0:
        notes = 31999;
        break;
    case 1:
    case 2:
        notes = random() % 32000;
        break;
    case 3:
    case 4:
        notes = random() % 600;
        break;
    default:
        break;
    }
    r->setNotes(randomText(random, notes).c_str());
    return r;
}

TEST_F(StagedSave, RandomTodoStoresSaveTheirPlainBytes) {
    struct Case {
        unsigned seed;
        int records;
    } cases[] = {{1, 1}, {2, 8}, {3, 9}, {4, 1200}};
    for (const auto& c : cases) {
        std::mt19937 random(c.seed);
        Todos store;
        for (int i = 0; i < c.records; i++)
            store.append(randomTodo(random));
        store.save();
        ASSERT_TRUE(readFile("pindle_todo.db") == plainBytes(store.head)) << c.records;
        // Saved again, shorter and changed, over the file just written.
        store.purgeCompleted();
        if (store.head != nullptr)
            store.head->setNotes("");
        store.save();
        ASSERT_TRUE(readFile("pindle_todo.db") == plainBytes(store.head)) << c.records;
        std::filesystem::remove("pindle_todo.db");
    }
}

TEST_F(StagedSave, EdgeCasesSaveTheirPlainBytes) {
    const std::string full(31999, 'n');
    struct Case {
        const char* name;
        std::function<void(TodoStore&)> fill;
        std::size_t oldFileSize;
    } cases[] = {
        {"one all-zero record", [](TodoStore& s) { s.append(new TodoRecord); }, 0},
        {"only the link slots are non-zero",
         [](TodoStore& s) {
             for (int i = 0; i < 3; i++)
                 s.append(new TodoRecord);
         },
         0},
        {"notes full length",
         [&full](TodoStore& s) {
             auto* r = new TodoRecord;
             r->month = -1;
             r->setCategory(full.c_str());
             r->setNotes(full.c_str());
             s.append(r);
         },
         0},
        {"short record over a longer old file",
         [](TodoStore& s) {
             auto* r = new TodoRecord;
             r->setDescription("d");
             s.append(r);
         },
         5 * 32124},
    };
    for (const auto& c : cases) {
        writeFile("pindle_todo.db", std::string(c.oldFileSize, 'o'));
        Todos store;
        c.fill(store);
        store.save();
        std::string saved = readFile("pindle_todo.db");
        ASSERT_EQ(saved.size(), 32124u * static_cast<std::size_t>(store.count())) << c.name;
        EXPECT_TRUE(saved == plainBytes(store.head)) << c.name;
    }
}

TEST_F(StagedSave, CategoryFilesSaveTheirPlainBytes) {
    std::mt19937 random(7);
    ScopedStore<CategoryStore> store;
    for (int i = 0; i < 600; i++) {
        auto* r = new CategoryRecord;
        r->setName(randomText(random, random() % 60).c_str());
        store.append(r);
    }
    store.save();
    EXPECT_TRUE(readFile("cat.db") == plainBytes(store.head));
}

using StagedSaveDeath = StagedSave;

// Limits that fall in text, in zeros, on stage edges and on the very last byte. None is below
// 100 bytes: the limit also applies to the file where the test catches the message.
TEST_F(StagedSaveDeath, FailedSaveStopsWhereAPlainWriteWould) {
    Todos store;
    for (std::size_t notes : {5000u, 0u, 300u}) {
        auto* r = new TodoRecord;
        r->setDescription("d");
        r->setNotes(std::string(notes, 'n').c_str());
        store.append(r);
    }
    const std::string plain = plainBytes(store.head);
    for (rlim_t limit : {100, 4095, 4096, 4097, 20000, 32123, 32124, 50000, 64249, 96371}) {
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
