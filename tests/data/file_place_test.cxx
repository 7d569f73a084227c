// What may stand where a data file should be. Nothing there may make a load or a save wait: a
// pipe, a socket or a loop of links is a file that cannot be opened. A file that another
// program changed is kept beside it before a save goes over it, and the user is told.
#include "save_report.h"
#include "support/store_helpers.h"
#include "support/temp_dir.h"
#include "todo_store.h"

#include <fcntl.h>
#include <functional>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using FilePlace = TempDirTest;
using Todos = ScopedStore<TodoStore>;

void makeSocket(const char* name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s", name);
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    listen(fd, 1);
}

TEST_F(FilePlace, PipesSocketsAndLinkLoopsCannotBeOpened) {
    int reader = -1;
    const struct {
        const char* what;
        std::function<void()> make;
    } places[] = {
        {"a pipe", [] { mkfifo("pindle_todo.db", 0600); }},
        {"a pipe with a reader",
         [&reader] {
             mkfifo("pindle_todo.db", 0600);
             reader = open("pindle_todo.db", O_RDONLY | O_NONBLOCK);
         }},
        {"a socket", [] { makeSocket("pindle_todo.db"); }},
        {"a link to itself", [] { symlink("pindle_todo.db", "pindle_todo.db"); }},
    };
    for (const auto& place : places) {
        std::remove("pindle_todo.db");
        place.make();
        testing::internal::CaptureStderr();
        Todos store;
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "could not open file pindle_todo.db\nskipping over reading record\n")
            << place.what;
        store.save(); // nothing to keep: not reported, as for any file that cannot be opened
        store.append(new TodoRecord);
        EXPECT_EXIT(store.save(), testing::ExitedWithCode(200),
                    "^could not open file pindle_todo.db\n$")
            << place.what;
    }
    close(reader);
}

TodoFields described(const char* description) {
    TodoFields fields;
    fields.description = description;
    return fields;
}

std::string reported;
void keepReport(const char* message) {
    reported = message;
}

TEST_F(FilePlace, AFileChangedElsewhereIsKeptBesideItAndReported) {
    writeFile("pindle_todo.db", todoFile({described("mine")}));
    Todos store;
    const std::string theirs = todoFile({described("mine"), described("theirs")});
    writeFile("pindle_todo.db", theirs);
    SaveReport::setHandler(keepReport);
    testing::internal::CaptureStderr();
    store.save();
    const std::string said = testing::internal::GetCapturedStderr();
    SaveReport::setHandler(nullptr);

    EXPECT_EQ(readFile("pindle_todo.db"), todoFile({described("mine")}));
    std::string kept;
    for (const auto& entry : std::filesystem::directory_iterator("."))
        if (entry.path().filename() != "pindle_todo.db")
            kept = entry.path().filename();
    EXPECT_EQ(kept.rfind("pindle_todo.db.changed-elsewhere-", 0), 0u) << kept;
    EXPECT_EQ(readFile(kept), theirs);
    EXPECT_EQ(reported,
              "pindle_todo.db was changed by another program; that version is kept as " + kept);
    EXPECT_EQ(said, reported + "\n");
    // Saved over once, the file is the store's again: the next save keeps nothing more.
    store.save();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 2);
}

} // namespace
