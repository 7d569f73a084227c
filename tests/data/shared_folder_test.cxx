// Two writers on one folder: what one writes between the other's load and its change is read
// again and kept, the other's change applied to the to-dos and categories as they are then; the
// folder's claims and its lock between processes; nothing left in the folder.
#include "data_folder.h"
#include "folder_claim.h"
#include "support/store_helpers.h"
#include "support/temp_dir.h"

#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using Todos = ScopedStore<TodoStore>;
using Categories = ScopedStore<CategoryStore>;

// One writer: its own stores on the current directory and the folder over them.
struct Writer {
    Todos todos;
    Categories categories;
    DataFolder folder{todos, categories};
};

TodoRecord* todo(const char* description, const char* category, bool completed = false) {
    auto* r = new TodoRecord;
    r->setCategory(category);
    r->setDescription(description);
    r->completed = completed ? 1 : 0;
    return r;
}

// "description:category", a "*" after a completed one.
std::vector<std::string> listed(const TodoStore& store) {
    std::vector<std::string> out;
    for (int i = 0; i < store.count(); i++) {
        const TodoRecord* r = store.at(i);
        out.push_back(std::string(r->description) + ":" + r->category + (r->completed ? "*" : ""));
    }
    return out;
}

std::vector<std::string> listed(const CategoryStore& store) {
    std::vector<std::string> out;
    for (int i = 0; i < store.count(); i++)
        out.emplace_back(store.at(i)->name);
    return out;
}

TodoRecord* byDescription(TodoStore& store, const char* description) {
    for (int i = 0; i < store.count(); i++) {
        if (std::strcmp(store.at(i)->description, description) == 0)
            return store.at(i);
    }
    return nullptr;
}

CategoryRecord* byName(CategoryStore& store, const char* name) {
    return store.find(name);
}

// The other program's changes, made and saved by a writer of its own.
using Foreign = std::function<void(Writer&)>;

Foreign addTodo(const char* description, const char* category) {
    return [=](Writer& w) { w.todos.append(todo(description, category)); };
}
Foreign editTodo(const char* from, const char* to) {
    return [=](Writer& w) { byDescription(w.todos, from)->setDescription(to); };
}
Foreign deleteTodo(const char* description) {
    return [=](Writer& w) { w.todos.remove(byDescription(w.todos, description)); };
}
Foreign purge() {
    return [](Writer& w) { w.todos.purgeCompleted(); };
}
Foreign renameCategory(const char* from, const char* to) {
    return [=](Writer& w) { byName(w.categories, from)->setName(to); };
}
Foreign deleteCategory(const char* name) {
    return [=](Writer& w) { w.categories.remove(byName(w.categories, name)); };
}

// A change made here as the window makes it: on a copy of what was picked before the other
// program wrote, applied inside a Change to whatever the files hold by then.
struct Local {
    const char* todo = nullptr;     // the to-do picked, by description
    const char* category = nullptr; // the category picked
    std::function<void(Writer&, const TodoRecord* picked, int at)> todoChange;
    std::function<void(Writer&, const CategoryRecord* picked, int at)> categoryChange;
};

Local newTodo(const char* description) {
    Local l;
    l.todoChange = [=](Writer& w, const TodoRecord*, int) {
        w.todos.append(todo(description, "Unassigned"));
    };
    return l;
}
Local editTodoHere(const char* from, const char* to) {
    Local l;
    l.todo = from;
    l.todoChange = [=](Writer& w, const TodoRecord* picked, int at) {
        TodoRecord* r = w.todos.findLike(*picked, at);
        if (r == nullptr) {
            r = new TodoRecord(*picked);
            r->next = nullptr;
            w.todos.append(r);
        }
        r->setDescription(to);
    };
    return l;
}
Local deleteTodoHere(const char* description) {
    Local l;
    l.todo = description;
    l.todoChange = [](Writer& w, const TodoRecord* picked, int at) {
        if (TodoRecord* r = w.todos.findLike(*picked, at))
            w.todos.remove(r);
    };
    return l;
}
Local purgeHere() {
    Local l;
    l.todoChange = [](Writer& w, const TodoRecord*, int) { w.todos.purgeCompleted(); };
    return l;
}
Local reassignHere() {
    Local l;
    l.todoChange = [](Writer& w, const TodoRecord*, int) {
        for (int i = 0; i < w.todos.count(); i++) {
            if (w.categories.find(w.todos.at(i)->category) == nullptr)
                w.todos.at(i)->setCategory("Unassigned");
        }
    };
    return l;
}
Local newCategoryHere(const char* name) {
    Local l;
    l.categoryChange = [=](Writer& w, const CategoryRecord*, int) {
        auto* c = new CategoryRecord;
        c->setName(name);
        w.categories.append(c);
    };
    return l;
}
Local renameCategoryHere(const char* from, const char* to) {
    Local l;
    l.category = from;
    l.categoryChange = [=](Writer& w, const CategoryRecord* picked, int at) {
        CategoryRecord* c = w.categories.findLike(*picked, at);
        if (c == nullptr) {
            c = new CategoryRecord;
            w.categories.append(c);
        }
        c->setName(to);
    };
    return l;
}
Local deleteCategoryHere(const char* name) {
    Local l;
    l.category = name;
    l.categoryChange = [](Writer& w, const CategoryRecord* picked, int at) {
        if (CategoryRecord* c = w.categories.findLike(*picked, at))
            w.categories.remove(c);
    };
    return l;
}

struct Row {
    const char* name;
    Foreign foreign;
    Local local;
    std::vector<std::string> todos;
    std::vector<std::string> categories;
};

using SharedFolder = TempDirTest;

// Runs the other program's change in a child process, or on a second writer in this one.
void runForeign(const Foreign& change, bool inChild) {
    auto apply = [&] {
        Writer other;
        DataFolder::Change lock(other.folder);
        change(other);
        other.categories.save();
        other.todos.save();
    };
    if (!inChild)
        return apply();
    pid_t child = fork();
    if (child == 0) {
        apply();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

// Each row: both writers load A, B (completed), C, D and the categories Unassigned, Work, Home;
// this writer picks what its change needs, the other changes and saves the files, then this one
// makes its change inside a Change and saves. The files, and the stores here, hold both intents.
TEST_F(SharedFolder, AChangeAfterAnotherWriterKeepsBothIntents) {
    const Row rows[] = {
        {"both add",
         addTodo("F", "Work"),
         newTodo("L"),
         {"A:Work", "B:Home*", "C:Work", "D:Home", "F:Work", "L:Unassigned"},
         {"Unassigned", "Work", "Home"}},
        {"edits of two to-dos",
         editTodo("D", "D2"),
         editTodoHere("A", "A2"),
         {"A2:Work", "B:Home*", "C:Work", "D2:Home"},
         {"Unassigned", "Work", "Home"}},
        {"an edit after an add",
         addTodo("F", "Work"),
         editTodoHere("C", "C2"),
         {"A:Work", "B:Home*", "C2:Work", "D:Home", "F:Work"},
         {"Unassigned", "Work", "Home"}},
        {"both edit one to-do: both kept",
         editTodo("A", "A1"),
         editTodoHere("A", "A2"),
         {"A1:Work", "B:Home*", "C:Work", "D:Home", "A2:Work"},
         {"Unassigned", "Work", "Home"}},
        {"an edit of a to-do deleted there: kept",
         deleteTodo("A"),
         editTodoHere("A", "A2"),
         {"B:Home*", "C:Work", "D:Home", "A2:Work"},
         {"Unassigned", "Work", "Home"}},
        {"deletes of two to-dos",
         deleteTodo("C"),
         deleteTodoHere("A"),
         {"B:Home*", "D:Home"},
         {"Unassigned", "Work", "Home"}},
        {"a delete of a to-do changed there: kept",
         editTodo("A", "A1"),
         deleteTodoHere("A"),
         {"A1:Work", "B:Home*", "C:Work", "D:Home"},
         {"Unassigned", "Work", "Home"}},
        {"both delete one to-do",
         deleteTodo("D"),
         deleteTodoHere("D"),
         {"A:Work", "B:Home*", "C:Work"},
         {"Unassigned", "Work", "Home"}},
        {"an add after a purge",
         purge(),
         newTodo("L"),
         {"A:Work", "C:Work", "D:Home", "L:Unassigned"},
         {"Unassigned", "Work", "Home"}},
        {"a purge after an add",
         addTodo("F", "Home"),
         purgeHere(),
         {"A:Work", "C:Work", "D:Home", "F:Home"},
         {"Unassigned", "Work", "Home"}},
        {"a tab switch after a rename there",
         renameCategory("Work", "Office"),
         reassignHere(),
         {"A:Unassigned", "B:Home*", "C:Unassigned", "D:Home"},
         {"Unassigned", "Office", "Home"}},
        {"a tab switch after an add in no category",
         addTodo("F", "Errands"),
         reassignHere(),
         {"A:Work", "B:Home*", "C:Work", "D:Home", "F:Unassigned"},
         {"Unassigned", "Work", "Home"}},
        {"a new category after a rename",
         renameCategory("Work", "Office"),
         newCategoryHere("Errands"),
         {"A:Work", "B:Home*", "C:Work", "D:Home"},
         {"Unassigned", "Office", "Home", "Errands"}},
        {"renames of one category: both kept",
         renameCategory("Home", "Casa"),
         renameCategoryHere("Home", "House"),
         {"A:Work", "B:Home*", "C:Work", "D:Home"},
         {"Unassigned", "Work", "Casa", "House"}},
        {"a rename of a category deleted there",
         deleteCategory("Home"),
         renameCategoryHere("Home", "House"),
         {"A:Work", "B:Home*", "C:Work", "D:Home"},
         {"Unassigned", "Work", "House"}},
        {"a delete after a rename of another",
         renameCategory("Work", "Office"),
         deleteCategoryHere("Home"),
         {"A:Work", "B:Home*", "C:Work", "D:Home"},
         {"Unassigned", "Office"}},
        {"both delete one category",
         deleteCategory("Work"),
         deleteCategoryHere("Work"),
         {"A:Work", "B:Home*", "C:Work", "D:Home"},
         {"Unassigned", "Home"}},
    };
    for (const Row& row : rows) {
        for (bool inChild : {false, true}) {
            SCOPED_TRACE(std::string(row.name) + (inChild ? ", in another process" : ""));
            writeFile("pindle_todo.db", todoFile({{1, 1, 2030, 0, 0, "Work", "A", ""},
                                                  {1, 1, 2030, 0, 1, "Home", "B", ""},
                                                  {1, 1, 2030, 0, 0, "Work", "C", ""},
                                                  {1, 1, 2030, 0, 0, "Home", "D", ""}}));
            writeFile("cat.db", categoryFile({"Unassigned", "Work", "Home"}));
            Writer here;
            TodoRecord* pickedTodo =
                row.local.todo ? byDescription(here.todos, row.local.todo) : nullptr;
            const TodoRecord todoCopy = pickedTodo ? *pickedTodo : TodoRecord();
            const int todoAt = here.todos.indexOf(pickedTodo);
            CategoryRecord* pickedCategory =
                row.local.category ? byName(here.categories, row.local.category) : nullptr;
            const CategoryRecord categoryCopy = pickedCategory ? *pickedCategory : CategoryRecord();
            const int categoryAt = here.categories.indexOf(pickedCategory);

            runForeign(row.foreign, inChild);
            {
                DataFolder::Change change(here.folder);
                if (row.local.todoChange) {
                    row.local.todoChange(here, &todoCopy, todoAt);
                    here.todos.save();
                } else {
                    row.local.categoryChange(here, &categoryCopy, categoryAt);
                    here.categories.save();
                }
            }
            EXPECT_EQ(listed(here.todos), row.todos);
            EXPECT_EQ(listed(here.categories), row.categories);
            Writer fresh;
            EXPECT_EQ(listed(fresh.todos), row.todos);
            EXPECT_EQ(listed(fresh.categories), row.categories);
            EXPECT_FALSE(here.todos.changedOnDisk() || here.categories.changedOnDisk());
        }
    }
}

// What a store last saw is compared with what stands at its name now: a file written, replaced,
// removed or put where there was none is a change; a store's own save is not.
TEST_F(SharedFolder, RefreshReadsAgainOnlyWhatChangedElsewhere) {
    testing::internal::CaptureStderr();
    Writer here;
    testing::internal::GetCapturedStderr();
    auto reloaded = [&] {
        DataFolder::Reloaded r = here.folder.refresh();
        return std::make_pair(r.todos, r.categories);
    };
    EXPECT_EQ(reloaded(), std::make_pair(false, false)) << "both missing, still missing";
    here.todos.append(todo("mine", "Unassigned"));
    here.todos.save();
    here.categories.save();
    EXPECT_EQ(reloaded(), std::make_pair(false, false)) << "its own saves";
    writeFile("cat.db", categoryFile({"Unassigned", "Theirs"}));
    EXPECT_EQ(reloaded(), std::make_pair(false, true));
    EXPECT_EQ(listed(here.categories), (std::vector<std::string>{"Unassigned", "Theirs"}));
    std::filesystem::remove("cat.db");
    testing::internal::CaptureStderr();
    EXPECT_EQ(reloaded(), std::make_pair(false, true)) << "removed: as at a first start";
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "could not open file cat.db\nskipping over reading record\n");
    EXPECT_EQ(listed(here.categories), std::vector<std::string>{"Unassigned"});
    writeFile("other", todoFile({{1, 1, 2030, 0, 0, "Work", "renamed over", ""}}));
    std::filesystem::rename("other", "pindle_todo.db");
    EXPECT_EQ(reloaded(), std::make_pair(true, false));
    EXPECT_EQ(listed(here.todos), std::vector<std::string>{"renamed over:Work"});
    testing::internal::CaptureStderr();
    std::filesystem::remove("pindle_todo.db");
    mkfifo("pindle_todo.db", 0600);
    EXPECT_EQ(reloaded(), std::make_pair(true, false)) << "a pipe, never waited on";
    EXPECT_EQ(reloaded(), std::make_pair(false, false)) << "the same pipe";
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(here.todos.count(), 0);
}

// Runs `body` in a child process, which holds what it took until this process ends it; returns
// once the child holds it, with the child's pid and a descriptor whose closing ends it.
struct Holder {
    pid_t pid;
    int release;
    void end() {
        close(release);
        waitpid(pid, nullptr, 0);
    }
};

Holder holdInChild(const std::function<void()>& body) {
    int ready[2], done[2];
    if (pipe(ready) != 0 || pipe(done) != 0)
        std::abort();
    pid_t child = fork();
    if (child == 0) {
        close(done[1]);
        body();
        (void)!write(ready[1], "x", 1);
        char c;
        (void)!read(done[0], &c, 1);
        _exit(0);
    }
    close(ready[1]);
    close(done[0]);
    char c;
    (void)!read(ready[0], &c, 1);
    close(ready[0]);
    return {child, done[1]};
}

// One window and one sync per folder, each beside the other; a claim ends with its process.
TEST_F(SharedFolder, ClaimsRefuseASecondCopyOfTheirOwnRoleOnly) {
    using Role = FolderClaim::Role;
    using State = FolderClaim::State;
    Holder window = holdInChild([] { static FolderClaim claim(".", Role::Window); });
    EXPECT_EQ(FolderClaim(".", Role::Window).state(), State::Busy);
    {
        FolderClaim sync(".", Role::Sync);
        EXPECT_EQ(sync.state(), State::Held);
        EXPECT_EQ(FolderClaim(".", Role::Sync).state(), State::Busy);
    }
    EXPECT_EQ(FolderClaim(".", Role::Sync).state(), State::Held) << "released with its object";
    window.end();
    EXPECT_EQ(FolderClaim(".", Role::Window).state(), State::Held) << "released at exit";
    EXPECT_EQ(FolderClaim("no such folder", Role::Window).state(), State::Unavailable);
    EXPECT_TRUE(std::filesystem::is_empty(".")) << "no lock file";
}

// A reader waits for a writer's change to end, and so does a second writer.
TEST_F(SharedFolder, TheLockKeepsReadersAndWritersOutOfAChange) {
    writeFile("pindle_todo.db", todoFile({{1, 1, 2030, 0, 0, "Work", "A", ""}}));
    writeFile("cat.db", categoryFile({"Unassigned"}));
    Writer here;
    for (bool reader : {true, false}) {
        Holder writer = holdInChild([] {
            static Writer other;
            static DataFolder::Change change(other.folder);
            other.todos.append(todo("theirs", "Work"));
            other.todos.save();
        });
        std::thread release([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            writer.end();
        });
        auto start = std::chrono::steady_clock::now();
        if (reader) {
            here.folder.refresh();
        } else {
            DataFolder::Change change(here.folder);
        }
        auto waited = std::chrono::steady_clock::now() - start;
        release.join();
        EXPECT_GE(waited, std::chrono::milliseconds(150)) << (reader ? "reader" : "writer");
        EXPECT_EQ(here.todos.count(), reader ? 2 : 3);
    }
}

} // namespace
