// The to-do store: loading and saving "pindle_todo.db" byte for byte, the failures that end the
// program, list operations, and the bounded text copies of a record.
#include "support/store_helpers.h"
#include "support/temp_dir.h"
#include "todo_store.h"

#include <csignal>
#include <cstring>
#include <memory>
#include <new>
#include <sys/resource.h>
#include <vector>

namespace {

using TodoFile = TempDirTest;
using Store = ScopedStore<TodoStore>;

TodoRecord* makeRecord(int month, int day, int year, int priority, bool completed,
                       const char* category, const char* description, const char* notes) {
    auto* r = new TodoRecord;
    r->month = month;
    r->day = day;
    r->year = year;
    r->priority = priority;
    r->completed = completed ? 1 : 0;
    r->setCategory(category);
    r->setDescription(description);
    r->setNotes(notes);
    return r;
}

std::vector<std::string> descriptions(const TodoStore& store) {
    std::vector<std::string> out;
    for (int i = 0; i < store.count(); i++)
        out.emplace_back(store.at(i)->description);
    return out;
}

TEST_F(TodoFile, MissingFileReportsTwoLinesAndStaysAbsent) {
    testing::internal::CaptureStderr();
    Store store;
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "could not open file pindle_todo.db\nskipping over reading record\n");
    EXPECT_EQ(store.head, nullptr);
    EXPECT_STREQ(store.fileName, "pindle_todo.db");
    EXPECT_FALSE(exists("pindle_todo.db"));
}

TEST_F(TodoFile, EmptyFileLoadsSilently) {
    writeFile("pindle_todo.db", "");
    testing::internal::CaptureStderr();
    Store store;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(store.count(), 0);
}

TEST_F(TodoFile, SaveWritesExactBigEndianRecords) {
    Store store;
    TodoRecord* first = makeRecord(12, 31, 2005, 8, true, "Work", "Ship it", "line 1\nline 2");
    // Bytes after a terminator in memory are not significant: the file gets zeros there.
    std::memset(first->description, 'x', sizeof first->description);
    first->setDescription("Ship it");
    store.append(first);
    store.append(makeRecord(-1, 0, 70000, -5, false, "", "", ""));
    store.save();

    TodoFields a;
    a.month = 12, a.day = 31, a.year = 2005, a.priority = 8, a.completed = 1;
    a.category = "Work", a.description = "Ship it", a.notes = "line 1\nline 2";
    a.link = 1; // any non-zero value: only the last record's slot must be zero
    TodoFields b;
    b.month = -1, b.day = 0, b.year = 70000, b.priority = -5;
    std::string expected = todoBytes(a) + todoBytes(b);
    std::string actual = readFile("pindle_todo.db");
    ASSERT_EQ(actual.size(), 2 * 32124u);
    EXPECT_NE(actual.substr(32120, 4), std::string(4, '\0'));
    actual.replace(32120, 4, beInt(1));
    EXPECT_TRUE(actual == expected);
    EXPECT_EQ(actual.substr(0, 4), std::string("\0\0\0\x0c", 4));
}

TEST_F(TodoFile, LoadsBigEndianFileAndIgnoresLinkSlots) {
    TodoFields a;
    a.month = 12, a.day = 25, a.year = 2004, a.priority = 1000, a.completed = 7;
    a.category = "Home", a.description = "Gifts", a.notes = "n", a.link = 0xdeadbeef;
    TodoFields b;
    b.month = -1, b.priority = -5, b.description = "Second", b.link = 0xffffffff;
    writeFile("pindle_todo.db", todoBytes(a) + todoBytes(b));
    Store store;
    ASSERT_EQ(store.count(), 2);
    const TodoRecord* r = store.at(0);
    EXPECT_EQ(r->month, 12);
    EXPECT_EQ(r->day, 25);
    EXPECT_EQ(r->year, 2004);
    EXPECT_EQ(r->priority, 1000);
    EXPECT_EQ(r->completed, 7);
    EXPECT_STREQ(r->category, "Home");
    EXPECT_STREQ(r->description, "Gifts");
    EXPECT_STREQ(r->notes, "n");
    EXPECT_EQ(store.at(1)->month, -1);
    EXPECT_EQ(store.at(1)->priority, -5);
    EXPECT_EQ(store.at(1)->next, nullptr);
}

TEST_F(TodoFile, TrailingPartialRecordIsDroppedAndNotSavedBack) {
    struct Case {
        std::size_t extra;
        int records;
    } cases[] = {{1, 0}, {32123, 0}, {0, 1}, {1, 1}, {32123, 2}};
    for (const auto& c : cases) {
        std::string bytes;
        for (int i = 0; i < c.records; i++) {
            TodoFields f;
            f.description = "r" + std::to_string(i);
            bytes += todoBytes(f);
        }
        writeFile("pindle_todo.db", bytes + std::string(c.extra, 'z'));
        testing::internal::CaptureStderr();
        Store store;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        ASSERT_EQ(store.count(), c.records) << c.extra;
        store.save();
        EXPECT_EQ(readFile("pindle_todo.db").size(), 32124u * c.records);
    }
}

TEST_F(TodoFile, SavingEmptyStoreTruncatesAndIgnoresOpenFailure) {
    writeFile("pindle_todo.db", std::string(32124, 'a'));
    {
        Store store;
        store.remove(store.head);
        store.save();
    }
    EXPECT_EQ(readFile("pindle_todo.db").size(), 0u);

    std::filesystem::remove("pindle_todo.db");
    std::filesystem::create_directory("pindle_todo.db");
    Store empty;
    testing::internal::CaptureStderr();
    empty.save();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// Each death test fills a store first (loading from /dev/full would never end), then puts a
// file that refuses the records where the store saves.
void fill(TodoStore& store, int records) {
    for (int i = 0; i < records; i++)
        store.append(makeRecord(1, 1, 2005, 0, false, "c", "d", "n"));
}

using TodoFileDeath = TodoFile;

TEST_F(TodoFileDeath, DirectoryInTheWayEndsWithStatus200) {
    Store store;
    fill(store, 1);
    std::filesystem::create_directory("pindle_todo.db");
    EXPECT_EXIT(store.save(), testing::ExitedWithCode(200),
                "^could not open file pindle_todo.db\n$");
}

TEST_F(TodoFileDeath, FullDeviceEndsWithStatus200) {
    Store store;
    fill(store, 2);
    std::filesystem::create_symlink("/dev/full", "pindle_todo.db");
    EXPECT_EXIT(store.save(), testing::ExitedWithCode(200), "^could not write records!\n$");
}

TEST_F(TodoFileDeath, FailureOfTheVeryLastByteIsCaught) {
    Store store;
    fill(store, 3);
    auto limitedSave = [&store] {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{3 * 32124 - 1, 3 * 32124 - 1};
        setrlimit(RLIMIT_FSIZE, &limit);
        store.save();
    };
    EXPECT_EXIT(limitedSave(), testing::ExitedWithCode(200), "^could not write records!\n$");
    EXPECT_EQ(readFile("pindle_todo.db").size(), 3 * 32124u - 1);
}

TEST_F(TodoFile, PositionalAccessCountAndRemove) {
    Store store;
    EXPECT_EQ(store.at(0), nullptr);
    EXPECT_EQ(store.at(-1), nullptr);
    auto orphan = std::make_unique<TodoRecord>(); // freed here: a double free would show under ASan
    store.remove(orphan.get());
    EXPECT_EQ(store.count(), 0);

    const char* names[] = {"a", "b", "c", "d"};
    for (const char* name : names)
        store.append(makeRecord(1, 1, 2005, 0, false, "", name, ""));
    EXPECT_EQ(store.count(), 4);
    struct Case {
        int position;
        const char* expected;
    } cases[] = {{-7, "a"}, {-1, "a"}, {0, "a"}, {2, "c"}, {3, "d"}, {4, nullptr}, {99, nullptr}};
    for (const auto& c : cases) {
        TodoRecord* r = store.at(c.position);
        if (c.expected == nullptr)
            EXPECT_EQ(r, nullptr) << c.position;
        else
            EXPECT_STREQ(r ? r->description : "(null)", c.expected) << c.position;
    }
    store.remove(store.at(2));
    store.remove(store.at(0));
    EXPECT_EQ(descriptions(store), (std::vector<std::string>{"b", "d"}));
    store.remove(store.at(1));
    EXPECT_EQ(store.at(0)->next, nullptr);
}

TEST_F(TodoFile, PurgeRemovesCompletedAndKeepsOrder) {
    Store store;
    const bool done[] = {true, false, true, true, false, false, true};
    for (int i = 0; i < 7; i++)
        store.append(makeRecord(1, 1, 2005, 0, done[i], "", std::to_string(i).c_str(), ""));
    store.at(4)->completed = 200; // any non-zero value counts as done
    store.purgeCompleted();
    EXPECT_EQ(descriptions(store), (std::vector<std::string>{"1", "5"}));
    store.append(makeRecord(1, 1, 2005, 0, false, "", "new", ""));
    EXPECT_EQ(descriptions(store), (std::vector<std::string>{"1", "5", "new"}));
}

TEST(TodoRecordText, FullLengthFieldsRunOnIntoTheNextField) {
    TodoRecord r;
    std::string fifty(50, 'D');
    r.setCategory(std::string(50, 'C').c_str());
    r.setDescription(fifty.c_str());
    EXPECT_EQ(r.notes[0], '\0'); // the description's terminator, for now
    r.setNotes("notes");
    EXPECT_EQ(std::string(r.description), fifty + "notes");
    EXPECT_EQ(std::string(r.category), std::string(50, 'C') + fifty + "notes");
}

TEST(TodoRecordText, CopiesNeverLeaveTheRecord) {
    // The record sits inside a larger buffer whose tail must stay untouched.
    alignas(TodoRecord) static unsigned char arena[sizeof(TodoRecord) + 64];
    std::memset(arena, 0x5a, sizeof arena);
    auto* r = new (arena) TodoRecord;
    std::string huge(40000, 'h');
    r->setCategory(huge.c_str());
    r->setDescription(huge.c_str());
    r->setNotes(huge.c_str());
    EXPECT_EQ(std::strlen(r->notes), 31999u);
    EXPECT_EQ(std::strlen(r->description), 50u + 31999u);
    for (std::size_t i = offsetof(TodoRecord, notes) + sizeof r->notes; i < sizeof arena; i++) {
        if (i >= offsetof(TodoRecord, next) && i < offsetof(TodoRecord, next) + sizeof r->next)
            continue;
        ASSERT_EQ(arena[i], 0x5a) << "byte " << i;
    }
}

TEST_F(TodoFile, UnterminatedStringsInFileStayInsideTheRecord) {
    std::string bytes = todoBytes({});
    std::memset(&bytes[17], 'q', 50 + 50 + 32000);
    writeFile("pindle_todo.db", bytes);
    Store store;
    ASSERT_EQ(store.count(), 1);
    EXPECT_EQ(std::strlen(store.head->category), 50u + 50u + 31999u);
    EXPECT_EQ(std::strlen(store.head->notes), 31999u);
    store.save();
    std::string saved = readFile("pindle_todo.db");
    EXPECT_EQ(saved.substr(17, 32099), bytes.substr(17, 32099));
    EXPECT_EQ(saved[17 + 32099], '\0');
}

} // namespace
