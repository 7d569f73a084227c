// The crash-state test's hands on the data layer: it writes a folder's files for one of the
// changes the programs make, makes that change as they make it (inside the folder's lock), and
// shows what a folder holds once the data layer has opened it, recovery included.
// usage: crash_driver prepare CHANGE N | act CHANGE N | show FOLDER... | changes
#include "data_folder.h"
#include "data_report.h"
#include "support/store_helpers.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <unistd.h>

namespace {

using Todos = ScopedStore<TodoStore>;
using Categories = ScopedStore<CategoryStore>;

// N to-dos over three categories, every fifth completed, every seventh in one that is gone.
void prepare(int n) {
    std::vector<TodoFields> todos;
    for (int i = 0; i < n; i++) {
        const char* category = i % 7 == 3 ? "Gone" : i % 3 == 0 ? "Work" : "Home";
        todos.push_back({1 + i % 12, 1 + i % 28, 2030, i % 9,
                         static_cast<unsigned char>(i % 5 == 0), category,
                         "To-do " + std::to_string(i),
                         i % 4 == 0 ? std::string(100 + 37 * i % 3000, 'n') : ""});
    }
    std::ofstream("pindle_todo.db", std::ios::binary) << todoFile(todos);
    std::ofstream("cat.db", std::ios::binary) << categoryFile({"Unassigned", "Work", "Home"});
}

TodoRecord* newTodo(const char* description, const char* category) {
    auto* r = new TodoRecord;
    r->month = 6;
    r->day = 1;
    r->year = 2031;
    r->setCategory(category);
    r->setDescription(description);
    return r;
}

void reassign(TodoStore& todos, const CategoryStore& categories) {
    for (int i = 0; i < todos.count(); i++) {
        if (categories.find(todos.at(i)->category) == nullptr)
            todos.at(i)->setCategory("Unassigned");
    }
}

// Each change as the window or the sync makes it, and the stores it saves.
struct Change {
    const char* name;
    std::function<void(TodoStore&, CategoryStore&)> make;
    bool savesTodos, savesCategories;
};

const Change kChanges[] = {
    {"edit", [](TodoStore& t, CategoryStore&) { t.at(t.count() / 2)->setDescription("Edited"); },
     true, false},
    {"append", [](TodoStore& t, CategoryStore&) { t.append(newTodo("New", "Work")); }, true, false},
    {"delete-first", [](TodoStore& t, CategoryStore&) { t.remove(t.at(0)); }, true, false},
    {"delete-middle", [](TodoStore& t, CategoryStore&) { t.remove(t.at(t.count() / 2)); }, true,
     false},
    {"delete-last", [](TodoStore& t, CategoryStore&) { t.remove(t.at(t.count() - 1)); }, true,
     false},
    {"purge", [](TodoStore& t, CategoryStore&) { t.purgeCompleted(); }, true, false},
    {"category-add",
     [](TodoStore&, CategoryStore& c) {
         auto* r = new CategoryRecord;
         r->setName("Errands");
         c.append(r);
     },
     false, true},
    {"category-rename", [](TodoStore&, CategoryStore& c) { c.find("Work")->setName("Office"); },
     false, true},
    {"category-delete-reassigning",
     [](TodoStore& t, CategoryStore& c) {
         c.remove(c.find("Home"));
         reassign(t, c);
     },
     true, true},
    {"tab-switch", [](TodoStore& t, CategoryStore& c) { reassign(t, c); }, true, false},
    // What pindle_sync's merge does with the server's changes: a new category and a to-do in it,
    // a to-do changed and one deleted there.
    {"sync-apply",
     [](TodoStore& t, CategoryStore& c) {
         auto* r = new CategoryRecord;
         r->setName("From the phone");
         c.append(r);
         t.append(newTodo("Down from the server", "From the phone"));
         t.at(1)->completed = 1;
         t.remove(t.at(2));
     },
     true, true},
};

const Change* find(const char* name) {
    for (const Change& c : kChanges) {
        if (std::strcmp(c.name, name) == 0)
            return &c;
    }
    return nullptr;
}

void quiet(DataReport::Kind kind, const char* line) {
    if (kind != DataReport::Kind::Unreadable)
        DataReport::toStderr(kind, line);
}

void act(const Change& change) {
    Todos todos;
    Categories categories;
    DataFolder folder(todos, categories);
    DataFolder::Change locked(folder);
    change.make(todos, categories);
    if (change.savesCategories)
        categories.save();
    if (change.savesTodos)
        todos.save();
}

// Every field of every to-do and every category, as text; the notes as their length and a
// checksum, so that a state differing anywhere shows. Ends with a line "--".
void show(const char* folder) {
    if (chdir(folder) != 0)
        std::exit(1);
    Todos todos;
    Categories categories;
    DataFolder(todos, categories).refresh();
    for (int i = 0; i < todos.count(); i++) {
        const TodoRecord* r = todos.at(i);
        unsigned sum = 0;
        for (const char* p = r->notes; *p != '\0'; p++)
            sum = sum * 31 + static_cast<unsigned char>(*p);
        std::printf("%d/%d/%d %d %d %s|%.50s|%zu:%08x\n", r->month, r->day, r->year, r->priority,
                    r->completed, r->category, r->description, std::strlen(r->notes), sum);
    }
    for (int i = 0; i < categories.count(); i++)
        std::printf("category %s\n", categories.at(i)->name);
    std::printf("--\n");
}

} // namespace

int main(int argc, char** argv) {
    DataReport::setSink(quiet);
    const Change* change = argc == 4 ? find(argv[2]) : nullptr;
    if (argc >= 2 && std::strcmp(argv[1], "show") == 0) {
        for (int i = 2; i < argc; i++)
            show(argv[i]);
    } else if (argc == 2 && std::strcmp(argv[1], "changes") == 0) {
        for (const Change& c : kChanges)
            std::printf("%s\n", c.name);
    } else if (change != nullptr && std::strcmp(argv[1], "prepare") == 0) {
        prepare(std::stoi(argv[3]));
    } else if (change != nullptr && std::strcmp(argv[1], "act") == 0) {
        act(*change);
    } else {
        std::fprintf(
            stderr,
            "usage: crash_driver prepare CHANGE N | act CHANGE N | show FOLDER... | changes\n");
        return 2;
    }
    return 0;
}
