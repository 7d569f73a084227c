// The two stores and their files: loading and saving byte for byte, what a first run reports,
// what may stand in a file's place, the failures that end the program, the list operations,
// and text copies bounded by a record.
#include "category_store.h"
#include "support/store_helpers.h"
#include "support/temp_dir.h"
#include "todo_store.h"

#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using StoreFile = TempDirTest;
using Todos = ScopedStore<TodoStore>;
using Categories = ScopedStore<CategoryStore>;

// As the links give them, which the store keeps in step with the positions.
std::vector<std::string> descriptions(const TodoStore& store) {
    std::vector<std::string> out;
    for (const TodoRecord* r = store.head; r != nullptr; r = r->next)
        out.emplace_back(r->description);
    return out;
}

std::vector<std::string> names(const CategoryStore& store) {
    std::vector<std::string> out;
    for (int i = 0; i < store.count(); i++)
        out.emplace_back(store.at(i)->name);
    return out;
}

// Whole records load as the file has them, numbers and all, notes of full length too (ended at the
// field's last byte if nothing ends them); a trailing part of a record, the link slots and the
// bytes after each terminator do not survive a save.
TEST_F(StoreFile, TodosLoadAsStoredAndSaveAsWritten) {
    TodoFields odd{12, 25, -70000, 1000, 7, "Home", "Gifts", "line 1\nline 2"};
    TodoFields plain{1, 1, 2005, 0, 0, "", "Second", std::string(31999, 'n')};
    TodoFields unended{1, 1, 2005, 0, 0, "", "Third", std::string(32000, 'u')};
    std::string file = todoBytes(odd, true) + todoBytes(plain, true) + todoBytes(unended, true);
    file.replace(17 + 5, 3, "old"); // leftovers after the category's terminator
    writeFile("pindle_todo.db", file + std::string(32123, 'z'));
    Todos store;
    ASSERT_EQ(descriptions(store), (std::vector<std::string>{"Gifts", "Second", "Third"}));
    const TodoRecord* r = store.at(0);
    EXPECT_EQ(std::vector<int>({r->month, r->day, r->year, r->priority, r->completed}),
              std::vector<int>({12, 25, -70000, 1000, 7}));
    EXPECT_STREQ(r->notes(), "line 1\nline 2");
    unended.notes.pop_back(); // the field's last byte ends the notes
    EXPECT_EQ(store.at(2)->notes(), unended.notes);
    store.save();
    EXPECT_TRUE(readFile("pindle_todo.db") == todoFile({odd, plain, unended}));
}

TEST_F(StoreFile, CategoriesLoadWholeRecordsWithTheirNamesEndedInside) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"", {}},
        {std::string(55, 'x'), {}},
        {categoryBytes("Home", false) + categoryBytes("Work") + "tail", {"Home", "Work"}},
        // No terminator: the last byte of the field becomes one, whatever the others hold.
        {std::string(30, 'u') + '\x01' + std::string(21, 'u') + beInt(0),
         {std::string(30, 'u') + '\x01' + std::string(20, 'u')}},
    };
    for (const auto& [bytes, loaded] : cases) {
        writeFile("cat.db", bytes);
        Categories store;
        EXPECT_EQ(names(store), loaded) << bytes.size();
        store.save();
        EXPECT_TRUE(readFile("cat.db") == categoryFile(loaded)) << bytes.size();
    }
}

// A record is found by its content: by name the earliest, like a copy the nearest to where the
// copy was taken, the earlier of two as near; -1: none.
TEST_F(StoreFile, FindIsExactAndPrefersTheEarliestOrTheNearest) {
    writeFile("cat.db", categoryFile({"Home", "Work", "Home", "", "Errands"}));
    Categories store;
    EXPECT_EQ(store.find("Home"), store.at(0));
    EXPECT_EQ(store.find(""), store.at(3));
    EXPECT_EQ(store.find("home") || store.find("Hom") || store.find("Home "), false);
    const std::tuple<const char*, int, int> likes[] = {
        {"Errands", 3, 4}, {"Home", 1, 0}, {"Home", 2, 2}, {"Work", 9, 1}, {"Gone", 0, -1}};
    for (auto [name, near, found] : likes) {
        CategoryRecord like;
        like.setName(name);
        EXPECT_EQ(store.findLike(like, near), found < 0 ? nullptr : store.at(found)) << name;
    }
}

// Two to-dos alike but for their notes, short or too long to be kept in memory: a copy of either
// finds its own, also once the file was read again, and a copy with notes of its own finds none.
TEST_F(StoreFile, FindLikeTellsToDosApartByTheirNotes) {
    for (const std::string& notes : {std::string("short"), std::string(300, 'n')}) {
        writeFile("pindle_todo.db", todoFile({{1, 1, 2030, 0, 0, "", "same", notes + "1"},
                                              {1, 1, 2030, 0, 0, "", "same", notes + "2"}}));
        Todos store;
        const TodoRecord second = *store.at(1);
        EXPECT_EQ(store.findLike(second, 0), store.at(1)) << notes.size();
        store.reload();
        EXPECT_EQ(store.findLike(second, 0), store.at(1)) << notes.size();
        TodoRecord other = second;
        other.setNotes(notes.c_str());
        EXPECT_EQ(store.findLike(other, 0), nullptr) << notes.size();
    }
}

using StoreFileDeath = StoreFile;

// Nothing in a file's place makes a load or a save wait: a pipe and a loop of links load as a
// missing file (a socket cannot even be opened); each of them, a folder and a full device end a
// save with status 200, and let an empty list's save pass without a word. Loading /dev/full would
// never end, so that store is filled first.
TEST_F(StoreFileDeath, WhatCannotBeOpenedOrWrittenEndsASaveWithStatus200) {
    // Made before the stores load, unless it is the full device; a load of it reports a
    // missing file or not; a save fails to write, or else to open.
    const struct {
        const char* what;
        std::function<void(const char*)> make;
        bool loadsAsMissing;
        bool failsToWrite;
    } places[] = {
        {"a folder", [](const char* n) { std::filesystem::create_directory(n); }, false, false},
        {"a pipe", [](const char* n) { mkfifo(n, 0600); }, true, false},
        {"a link to itself", [](const char* n) { symlink(n, n); }, true, false},
        {"a full device", [](const char* n) { symlink("/dev/full", n); }, true, true},
    };
    for (const char* name : {"pindle_todo.db", "cat.db"}) {
        const std::string missing = std::string("could not open file ") + name;
        for (const auto& place : places) {
            if (!place.failsToWrite)
                place.make(name);
            testing::internal::CaptureStderr();
            Todos todos;
            Categories categories;
            std::string said = testing::internal::GetCapturedStderr();
            EXPECT_EQ(said.find(missing + "\nskipping over reading record\n") != said.npos,
                      place.loadsAsMissing)
                << name << " as " << place.what << ": " << said;
            if (place.failsToWrite)
                place.make(name);
            todos.append(newTodo("keep"));
            categories.append(newCategory(""));
            auto save = [&] { std::string(name) == "cat.db" ? categories.save() : todos.save(); };
            const std::string failure = place.failsToWrite ? "could not write records!" : missing;
            EXPECT_EXIT(save(), testing::ExitedWithCode(200), "^" + failure + "\n$")
                << name << " as " << place.what;
            todos.clear();
            categories.clear();
            testing::internal::CaptureStderr();
            save();
            EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << name << " as " << place.what;
            std::filesystem::remove_all(name);
        }
    }
}

// The window saves for as long as it is open: no save keeps a descriptor, in place or whole.
TEST_F(StoreFile, SavesKeepNoDescriptorOpen) {
    std::vector<TodoFields> todos(8);
    for (std::size_t i = 0; i < todos.size(); i++)
        todos[i].description = std::to_string(i);
    writeFile("pindle_todo.db", todoFile(todos));
    Todos store;
    const long before = openDescriptors();
    for (int i = 0; i < 4; i++) {
        store.at(0)->setDescription("edited"); // in place, through the journal
        store.save();
        store.remove(store.at(0)); // every record moves: a whole new file
        store.save();
    }
    EXPECT_EQ(openDescriptors(), before);
}

// Positions below zero give the first record, past the end null; removing a record not in the
// list does nothing; removing, purging (any non-zero flag counts as done) and clearing keep the
// rest in order and the links in step; an empty list saves as an empty file.
TEST_F(StoreFile, ListOperations) {
    writeFile("pindle_todo.db", todoFile({{}}));
    Todos store;
    store.clear();
    EXPECT_EQ(store.at(0), nullptr);
    auto orphan = std::make_unique<TodoRecord>(); // freed here: a double free shows under ASan
    store.remove(orphan.get());
    for (const char* d : {"a", "b", "c", "d", "e", "f", "g"})
        store.append(newTodo(d, "", *d == 'b' || *d == 'e'));
    EXPECT_EQ(store.at(-7), store.at(0));
    EXPECT_EQ(store.at(7), nullptr);
    store.remove(store.at(2));
    store.remove(store.at(0));
    EXPECT_EQ(descriptions(store), (std::vector<std::string>{"b", "d", "e", "f", "g"}));
    store.at(1)->completed = 200;
    store.purgeCompleted();
    store.remove(store.at(1));
    EXPECT_EQ(descriptions(store), std::vector<std::string>{"f"});
    EXPECT_EQ(store.count(), 1);
    store.clear();
    EXPECT_EQ(store.head, nullptr);
    store.save();
    EXPECT_EQ(readFile("pindle_todo.db").size(), 0u);
}

TEST(TodoRecordText, AFullFieldRunsOnIntoTheNextButNoCopyLeavesTheRecord) {
    // The record sits inside a larger buffer whose tail must stay untouched.
    alignas(TodoRecord) static unsigned char arena[sizeof(TodoRecord) + 64];
    std::memset(arena, 0x5a, sizeof arena);
    auto* r = ::new (arena) TodoRecord;
    r->next = r;
    r->setCategory(std::string(50, 'C').c_str());
    r->setDescription(std::string(50, 'D').c_str());
    r->setNotes("notes");
    EXPECT_EQ(std::string(r->category), std::string(50, 'C') + std::string(50, 'D') + "notes");
    // A description of 50 ends the notes; a longer one runs on into them as far as they go.
    r->setDescription(std::string(50, 'd').c_str());
    EXPECT_STREQ(r->notes(), "");
    std::string huge(40000, 'h');
    r->setDescription(huge.c_str());
    EXPECT_EQ(std::string(r->notes()), std::string(31999, 'h'));
    EXPECT_EQ(std::strlen(r->description), 50u + TodoRecord::kNotesKept);
    r->setNotes(huge.c_str());
    r->setCategory(huge.c_str());
    EXPECT_EQ(r->next, r);
    for (std::size_t i = sizeof(TodoRecord); i < sizeof arena; i++)
        ASSERT_EQ(arena[i], 0x5a) << "byte " << i;
    r->~TodoRecord();
}

} // namespace
