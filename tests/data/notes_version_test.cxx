// Notes read when they are needed come from the version of the file the list was loaded from,
// whatever another program did to the file in between: a replacement by a rename or a removal
// leaves that version readable; a change in place ends it, and a read then fails rather than
// mix versions, the window reading the files again instead. Saves write such notes from that
// version, at whatever position their to-do now stands, or stop with status 200 when it is gone.
#include "data_folder.h"
#include "support/store_helpers.h"
#include "support/temp_dir.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Todos = ScopedStore<TodoStore>;

// Notes too long for a record to keep in memory, told apart by their first and last letters.
std::string longNotes(char letter, char version) {
    return std::string(300, letter) + version;
}

std::string tag(const char* notes) {
    const std::size_t length = std::strlen(notes);
    return length == 0 ? "" : std::string{notes[0], notes[length - 1]};
}

// The to-dos as "description:notes" by their tags.
std::string listed(const TodoStore& todos) {
    std::string out;
    for (int i = 0; i < todos.count(); i++)
        out +=
            std::string(i ? " " : "") + todos.at(i)->description + ":" + tag(todos.at(i)->notes());
    return out;
}

std::string version(char v) {
    return todoFile({{1, 1, 2030, 0, 0, "Work", "A", longNotes('a', v)},
                     {1, 2, 2030, 0, 0, "Work", "B", longNotes('b', v)},
                     {1, 3, 2030, 0, 0, "Work", "C", std::string("c") + v}});
}

enum class Other { Nothing, Renamed, Removed, SavedInPlace, WrittenInPlace };

// Another program's change: version 2 of the file put in place by a rename or written in place
// by a program that ignores the folder's lock, A's notes of version 2 saved as ours are (in place
// under the lock); or the file removed.
void elsewhere(Other other) {
    const std::string two = version('2');
    if (other == Other::Renamed) {
        std::ofstream("theirs", std::ios::binary) << two;
        std::rename("theirs", "pindle_todo.db");
    } else if (other == Other::Removed) {
        std::remove("pindle_todo.db");
    } else if (other == Other::SavedInPlace) {
        Writer them; // a third of the file changes: written in place
        DataFolder::Change change(them.folder);
        them.todos.at(0)->setNotes(longNotes('a', '2').c_str());
        them.todos.save();
    } else if (other == Other::WrittenInPlace) {
        // Put back a second earlier, so that stat tells it apart whatever the clock's granularity.
        struct stat old {};
        stat("pindle_todo.db", &old);
        const int fd = open("pindle_todo.db", O_WRONLY);
        ASSERT_EQ(pwrite(fd, two.data(), two.size(), 0), static_cast<ssize_t>(two.size()));
        const timespec times[2] = {old.st_atim, {old.st_mtim.tv_sec - 1, old.st_mtim.tv_nsec}};
        futimens(fd, times);
        close(fd);
    }
}

class NotesVersion : public TempDirTest {
protected:
    static void startFiles() {
        writeFile("pindle_todo.db", version('1'));
        writeFile("cat.db", categoryFile({"Work"}));
    }
};

// The window opens the entry dialog on A after another program's change: it reads A's notes as
// the list shows them, or, when that version is gone, reads the files again and then theirs.
TEST_F(NotesVersion, TheDialogReadsTheLoadedVersionOrReadsTheFilesAgain) {
    const std::pair<Other, std::string> rows[] = {
        {Other::Nothing, "a1"},
        {Other::Renamed, "a1"},
        {Other::Removed, "a1"},
        {Other::SavedInPlace, "gone, then a2"},
        {Other::WrittenInPlace, "gone, then a2"},
    };
    for (const auto& [other, read] : rows) {
        SCOPED_TRACE(read);
        startFiles();
        Writer here;
        elsewhere(other);
        std::string seen;
        if (const TodoRecord* a = here.todos.at(0); a->readNotes()) {
            seen = tag(a->notes());
        } else {
            here.folder.refresh();
            seen = "gone, then " + tag(here.todos.at(0)->notes());
        }
        EXPECT_EQ(seen, read);
    }
}

enum class Act { EditLast, DeleteFirst };

// The window's change, and another program's write coming before it or inside it, after the
// change read the files again.
void changeBeside(Other other, bool insideChange, Act act) {
    Writer here;
    if (!insideChange)
        elsewhere(other);
    DataFolder::Change locked(here.folder);
    if (insideChange)
        elsewhere(other);
    if (act == Act::EditLast)
        here.todos.at(here.todos.count() - 1)->setDescription("edited");
    else
        here.todos.remove(here.todos.at(0));
    here.todos.save();
    locked.commit();
    // What the store reads of its own to-dos after the save is what the file holds.
    EXPECT_EQ(listed(here.todos), listed(Todos()));
}

// What the file holds after the change, as a fresh load reads it.
TEST_F(NotesVersion, SavesWriteTheLoadedVersionsNotesWhereverTheirToDoNowStands) {
    const struct {
        Other other;
        bool insideChange;
        Act act;
        std::string saved;
    } rows[] = {
        {Other::Nothing, false, Act::EditLast, "A:a1 B:b1 edited:c1"},
        {Other::Nothing, false, Act::DeleteFirst, "B:b1 C:c1"},
        {Other::SavedInPlace, false, Act::EditLast, "A:a2 B:b1 edited:c1"},
        {Other::WrittenInPlace, false, Act::EditLast, "A:a2 B:b2 edited:c2"},
        {Other::Renamed, true, Act::EditLast, "A:a1 B:b1 edited:c1"},
        {Other::Renamed, true, Act::DeleteFirst, "B:b1 C:c1"},
        {Other::Removed, true, Act::DeleteFirst, "B:b1 C:c1"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.saved);
        startFiles();
        testing::internal::CaptureStderr();
        changeBeside(row.other, row.insideChange, row.act);
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(listed(Todos()), row.saved);
        for (const auto& entry : std::filesystem::directory_iterator("."))
            std::filesystem::remove(entry.path());
    }
}

using NotesVersionDeath = NotesVersion;

// A program that ignores the lock writes in place while the change holds it: what the save had
// still to read is gone, so it stops before writing anything, and the other's version stays.
TEST_F(NotesVersionDeath, ASaveStopsWhenWhatItMustReadWasWrittenOverInPlace) {
    for (Act act : {Act::EditLast, Act::DeleteFirst}) {
        startFiles();
        EXPECT_EXIT(changeBeside(Other::WrittenInPlace, true, act), testing::ExitedWithCode(200),
                    "^could not save pindle_todo.db: another program changed it while it was "
                    "open here, and what was left to read of it is gone\n$");
        EXPECT_TRUE(readFile("pindle_todo.db") == version('2'));
    }
}

} // namespace
