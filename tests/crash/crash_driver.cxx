// The data layer driven from the command line in the current folder, for the crash-state test
// and the failing saves: it writes a folder's files, makes one of the changes the programs make
// as they make it (inside the folder's lock, both stores saved), and shows what a folder holds
// once the data layer has opened it, recovery included. One more change, left out of the list,
// has another program write the file while it is loaded.
// usage: crash_driver prepare N | act CHANGE | act edit-after-another | show FOLDER... | changes
#include "data_folder.h"
#include "support/store_helpers.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

struct Stores {
    ScopedStore<TodoStore> todos;
    ScopedStore<CategoryStore> categories;
};

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

void reassign(Stores& s) {
    for (int i = 0; i < s.todos.count(); i++) {
        if (s.categories.find(s.todos.at(i)->category) == nullptr)
            s.todos.at(i)->setCategory("Unassigned");
    }
}

// Another program renames the first to-do in the file (its description starts at byte 67), then
// this one edits it: the save finds the file changed since it was loaded.
void editAfterAnother(Stores& s) {
    int fd = open("pindle_todo.db", O_WRONLY | O_CLOEXEC);
    if (fd < 0 || pwrite(fd, "Another's", 9, 67) != 9 || close(fd) != 0)
        std::exit(1);
    s.todos.at(0)->setDescription("Edited");
}

// Each change as the window or the sync makes it; the last is left out of the list.
const std::pair<const char*, void (*)(Stores&)> kChanges[] = {
    {"edit", [](Stores& s) { s.todos.at(s.todos.count() / 2)->setDescription("Edited"); }},
    {"append", [](Stores& s) { s.todos.append(newTodo("New", "Work")); }},
    {"delete-first", [](Stores& s) { s.todos.remove(s.todos.at(0)); }},
    {"delete-middle", [](Stores& s) { s.todos.remove(s.todos.at(s.todos.count() / 2)); }},
    {"delete-last", [](Stores& s) { s.todos.remove(s.todos.at(s.todos.count() - 1)); }},
    {"purge", [](Stores& s) { s.todos.purgeCompleted(); }},
    {"category-add", [](Stores& s) { s.categories.append(newCategory("Errands")); }},
    {"category-rename", [](Stores& s) { s.categories.find("Work")->setName("Office"); }},
    {"category-delete-reassigning",
     [](Stores& s) {
         s.categories.remove(s.categories.find("Home"));
         reassign(s);
     }},
    {"tab-switch", reassign},
    // What pindle_sync's merge does with the server's changes: a new category and a to-do in it,
    // a to-do changed and one deleted there.
    {"sync-apply",
     [](Stores& s) {
         s.categories.append(newCategory("From the phone"));
         s.todos.append(newTodo("Down from the server", "From the phone"));
         s.todos.at(1)->completed = 1;
         s.todos.remove(s.todos.at(2));
     }},
    {"edit-after-another", editAfterAnother},
};

int act(void (*make)(Stores&)) {
    Stores s;
    DataFolder folder(s.todos, s.categories);
    DataFolder::Change locked(folder);
    make(s);
    s.categories.save();
    s.todos.save();
    return 0;
}

// Every field of every to-do and every category, as text; the notes as their length and a
// checksum, so that a state differing anywhere shows. Ends with a line "--".
void show(const char* folder) {
    if (chdir(folder) != 0)
        std::exit(1);
    Stores s;
    DataFolder(s.todos, s.categories).refresh();
    for (int i = 0; i < s.todos.count(); i++) {
        const TodoRecord* r = s.todos.at(i);
        unsigned sum = 0;
        for (const char* p = r->notes(); *p != '\0'; p++)
            sum = sum * 31 + static_cast<unsigned char>(*p);
        std::printf("%d/%d/%d %d %d %s|%.50s|%zu:%08x\n", r->month, r->day, r->year, r->priority,
                    r->completed, r->category, r->description, std::strlen(r->notes()), sum);
    }
    for (int i = 0; i < s.categories.count(); i++)
        std::printf("category %s\n", s.categories.at(i)->name);
    std::printf("--\n");
}

} // namespace

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "show") {
        for (int i = 2; i < argc; i++)
            show(argv[i]);
        return 0;
    }
    for (const auto& [name, make] : kChanges) {
        if (command == "changes" && make != editAfterAnother)
            std::printf("%s\n", name);
        else if (command == "act" && argc == 3 && std::strcmp(argv[2], name) == 0)
            return act(make);
    }
    if (command == "prepare" && argc == 3) {
        prepare(std::stoi(argv[2]));
    } else if (command != "changes") {
        std::fprintf(stderr, "usage: crash_driver prepare N | act CHANGE | act edit-after-another"
                             " | show FOLDER... | changes\n");
        return 2;
    }
    return 0;
}
