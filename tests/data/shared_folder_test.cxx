// Two writers on one folder: what one writes between the other's load and its change is read
// again and kept, the other's change applied to the to-dos and categories as they are then; the
// folder's claims and its lock between processes; nothing left in the folder.
#include "data_folder.h"
#include "folder_claim.h"
#include "support/store_helpers.h"
#include "support/temp_dir.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

// The to-dos as "description:category" ("*" after a completed one), then the categories.
std::string listed(const Writer& w) {
    std::string out;
    for (int i = 0; i < w.todos.count(); i++) {
        const TodoRecord* r = w.todos.at(i);
        out += std::string(r->description) + ":" + r->category + (r->completed ? "* " : " ");
    }
    out += "|";
    for (int i = 0; i < w.categories.count(); i++)
        out += std::string(" ") + w.categories.at(i)->name;
    return out;
}

// One writer's action, on the to-do or category named `what`.
enum Act { AddTodo, EditTodo, DeleteTodo, Purge, Reassign, AddCategory, Rename, Delete };
struct Action {
    Act act;
    const char* what = "";
    const char* to = "";
};

// What an action acts on, copied with its position when it was picked.
struct Picked {
    TodoRecord todo;
    int todoAt = -1;
    CategoryRecord category;
    int categoryAt = -1;
};

Picked pick(const Writer& w, const Action& a) {
    Picked p;
    for (int i = 0; i < w.todos.count(); i++) {
        if (std::strcmp(w.todos.at(i)->description, a.what) == 0) {
            p.todo = *w.todos.at(i);
            p.todoAt = i;
        }
    }
    if (const CategoryRecord* c = w.categories.find(a.what)) {
        p.category = *c;
        p.categoryAt = w.categories.indexOf(c);
    }
    return p;
}

// As the window does it, inside a Change: what was picked is found again by its content, an edit
// of what is gone added beside what is there, a delete of what is gone left undone; then both
// stores are saved, a store with nothing changed writing nothing.
void actAndSave(Writer& w, const Action& a, const Picked& p) {
    DataFolder::Change change(w.folder);
    TodoRecord* todo = w.todos.findLike(p.todo, p.todoAt);
    CategoryRecord* category = w.categories.findLike(p.category, p.categoryAt);
    switch (a.act) {
    case AddTodo:
        w.todos.append(newTodo(a.what, a.to));
        break;
    case EditTodo:
        if (todo == nullptr) {
            todo = new TodoRecord(p.todo);
            todo->next = nullptr;
            w.todos.append(todo);
        }
        todo->setDescription(a.to);
        break;
    case DeleteTodo:
        if (todo != nullptr)
            w.todos.remove(todo);
        break;
    case Purge:
        w.todos.purgeCompleted();
        break;
    case Reassign:
        for (int i = 0; i < w.todos.count(); i++) {
            if (w.categories.find(w.todos.at(i)->category) == nullptr)
                w.todos.at(i)->setCategory("Unassigned");
        }
        break;
    case AddCategory:
    case Rename:
        if (a.act == Rename && category != nullptr)
            category->setName(a.to);
        else
            w.categories.append(newCategory(a.to));
        break;
    case Delete:
        if (category != nullptr)
            w.categories.remove(category);
        break;
    }
    w.todos.save();
    w.categories.save();
}

// The other program's action, made by a writer of its own, in this process or another.
void actElsewhere(const Action& a, bool inChild) {
    pid_t child = inChild ? fork() : 0;
    if (child == 0) {
        Writer other;
        actAndSave(other, a, pick(other, a));
        if (inChild)
            _exit(testing::Test::HasFailure() ? 1 : 0);
        return;
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

using SharedFolder = TempDirTest;

// Each row: both writers load A, B (completed), C, D and the categories Unassigned, Work, Home;
// this writer picks what its action needs, the other acts and saves, then this one acts inside a
// Change and saves. The stores here, and a fresh load of the files, hold both intents: the
// to-dos and the categories each row names.
TEST_F(SharedFolder, AChangeAfterAnotherWritersKeepsBothIntents) {
    const std::string start = "A:Work B:Home* C:Work D:Home ";
    const struct {
        Action foreign, local;
        std::string todos;
        std::string categories = "Unassigned Work Home";
    } rows[] = {
        // Both add; edits of two to-dos; an edit after an add.
        {{AddTodo, "F", "Work"}, {AddTodo, "L", "Unassigned"}, start + "F:Work L:Unassigned "},
        {{EditTodo, "D", "D2"}, {EditTodo, "A", "A2"}, "A2:Work B:Home* C:Work D2:Home "},
        {{AddTodo, "F", "Work"}, {EditTodo, "C", "C2"}, "A:Work B:Home* C2:Work D:Home F:Work "},
        // Both edit one to-do: both kept; an edit of one deleted there: kept.
        {{EditTodo, "A", "A1"}, {EditTodo, "A", "A2"}, "A1:Work B:Home* C:Work D:Home A2:Work "},
        {{DeleteTodo, "A"}, {EditTodo, "A", "A2"}, "B:Home* C:Work D:Home A2:Work "},
        // Deletes of two to-dos; a delete of one changed there: kept; both delete one to-do.
        {{DeleteTodo, "C"}, {DeleteTodo, "A"}, "B:Home* D:Home "},
        {{EditTodo, "A", "A1"}, {DeleteTodo, "A"}, "A1:Work B:Home* C:Work D:Home "},
        {{DeleteTodo, "D"}, {DeleteTodo, "D"}, "A:Work B:Home* C:Work "},
        // An add after a purge, a purge after an add.
        {{Purge}, {AddTodo, "L", "Unassigned"}, "A:Work C:Work D:Home L:Unassigned "},
        {{AddTodo, "F", "Home"}, {Purge}, "A:Work C:Work D:Home F:Home "},
        // A tab switch after a rename, after an add.
        {{Rename, "Work", "Office"},
         {Reassign},
         "A:Unassigned B:Home* C:Unassigned D:Home ",
         "Unassigned Office Home"},
        {{AddTodo, "F", "Errands"}, {Reassign}, start + "F:Unassigned "},
        // A new category after a rename; renames of one category: both kept; a rename of one
        // deleted there; a delete after a rename of another; both delete one category.
        {{Rename, "Work", "Office"},
         {AddCategory, "", "Errands"},
         start,
         "Unassigned Office Home Errands"},
        {{Rename, "Home", "Casa"}, {Rename, "Home", "House"}, start, "Unassigned Work Casa House"},
        {{Delete, "Home"}, {Rename, "Home", "House"}, start, "Unassigned Work House"},
        {{Rename, "Work", "Office"}, {Delete, "Home"}, start, "Unassigned Office"},
        {{Delete, "Work"}, {Delete, "Work"}, start, "Unassigned Home"},
    };
    for (const auto& row : rows) {
        const std::string files = row.todos + "| " + row.categories;
        for (bool inChild : {false, true}) {
            SCOPED_TRACE(files + (inChild ? ", in another process" : ""));
            writeFile("pindle_todo.db", todoFile({{1, 1, 2030, 0, 0, "Work", "A", ""},
                                                  {1, 1, 2030, 0, 1, "Home", "B", ""},
                                                  {1, 1, 2030, 0, 0, "Work", "C", ""},
                                                  {1, 1, 2030, 0, 0, "Home", "D", ""}}));
            writeFile("cat.db", categoryFile({"Unassigned", "Work", "Home"}));
            Writer here;
            const Picked picked = pick(here, row.local);
            actElsewhere(row.foreign, inChild);
            actAndSave(here, row.local, picked);
            EXPECT_EQ(listed(here), files);
            EXPECT_EQ(listed(Writer()), files);
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
    here.todos.append(newTodo("mine", "Unassigned"));
    here.todos.save();
    here.categories.save();
    EXPECT_EQ(reloaded(), std::make_pair(false, false)) << "its own saves";
    writeFile("cat.db", categoryFile({"Unassigned", "Theirs"}));
    EXPECT_EQ(reloaded(), std::make_pair(false, true));
    EXPECT_EQ(listed(here), "mine:Unassigned | Unassigned Theirs");
    std::filesystem::remove("cat.db");
    testing::internal::CaptureStderr();
    EXPECT_EQ(reloaded(), std::make_pair(false, true)) << "removed: as at a first start";
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "could not open file cat.db\nskipping over reading record\n");
    EXPECT_EQ(listed(here), "mine:Unassigned | Unassigned");
    writeFile("other", todoFile({{1, 1, 2030, 0, 0, "Work", "renamed over", ""}}));
    std::filesystem::rename("other", "pindle_todo.db");
    EXPECT_EQ(reloaded(), std::make_pair(true, false));
    EXPECT_EQ(listed(here), "renamed over:Work | Unassigned");
    testing::internal::CaptureStderr();
    std::filesystem::remove("pindle_todo.db");
    mkfifo("pindle_todo.db", 0600);
    EXPECT_EQ(reloaded(), std::make_pair(true, false)) << "a pipe, never waited on";
    EXPECT_EQ(reloaded(), std::make_pair(false, false)) << "the same pipe";
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(here.todos.count(), 0);
}

// Runs `body` in a child process, which holds what it took until end() kills it; returns the
// child's id once the child holds it.
pid_t holdInChild(const std::function<void()>& body) {
    int ready[2];
    if (pipe(ready) != 0)
        std::abort();
    pid_t child = fork();
    if (child == 0) {
        body();
        (void)!write(ready[1], "x", 1);
        pause();
    }
    close(ready[1]);
    char c;
    (void)!read(ready[0], &c, 1);
    close(ready[0]);
    return child;
}

void end(pid_t child) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

// One window and one sync per folder, each beside the other; a claim ends with its process.
TEST_F(SharedFolder, ClaimsRefuseASecondCopyOfTheirOwnRoleOnly) {
    using Role = FolderClaim::Role;
    using State = FolderClaim::State;
    const pid_t window = holdInChild([] { static FolderClaim claim(".", Role::Window); });
    const long before = openDescriptors();
    EXPECT_EQ(FolderClaim(".", Role::Window).state(), State::Busy);
    EXPECT_EQ(openDescriptors(), before) << "a refused claim keeps its descriptor";
    {
        FolderClaim sync(".", Role::Sync);
        EXPECT_EQ(sync.state(), State::Held);
        EXPECT_EQ(FolderClaim(".", Role::Sync).state(), State::Busy);
    }
    EXPECT_EQ(FolderClaim(".", Role::Sync).state(), State::Held) << "released with its object";
    end(window);
    EXPECT_EQ(FolderClaim(".", Role::Window).state(), State::Held)
        << "released when its process ends";
    EXPECT_EQ(FolderClaim("no such folder", Role::Window).state(), State::Unavailable);
    EXPECT_TRUE(std::filesystem::is_empty(".")) << "no lock file";
}

// A reader waits for a writer's change to end, and so does a second writer.
TEST_F(SharedFolder, TheLockKeepsReadersAndWritersOutOfAChange) {
    writeFile("pindle_todo.db", todoFile({{1, 1, 2030, 0, 0, "Work", "A", ""}}));
    writeFile("cat.db", categoryFile({"Unassigned"}));
    Writer here;
    for (bool reader : {true, false}) {
        const pid_t writer = holdInChild([] {
            static Writer other;
            static DataFolder::Change change(other.folder);
            other.todos.append(newTodo("theirs", "Work"));
            other.todos.save();
            change.commit(); // written now, the lock still held
        });
        std::thread release([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            end(writer);
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
    // A refresh inside a change, as the window's watch may ask for one, keeps the change's lock.
    DataFolder::Change change(here.folder);
    here.folder.refresh();
    int other = open(".", O_RDONLY | O_DIRECTORY);
    EXPECT_NE(flock(other, LOCK_SH | LOCK_NB), 0) << "the change's lock was let go";
    close(other);
}

} // namespace
