// A data folder's two files as one: the to-do and category stores that hold them, the folder's
// lock around every read and every change, and the check whether another program changed a file
// since its store last read or wrote it. The program, pindle_sync and pindle_export all work on
// their folder, the current directory, through it. A writer makes each change inside a Change:
// the folder is locked, whatever changed is read again, and only then is the change applied to
// the to-dos and categories as they are now, so that nothing another program wrote is lost.
#ifndef PINDLE_DATA_FOLDER_H
#define PINDLE_DATA_FOLDER_H

#include "category_store.h"
#include "folder_lock.h"
#include "todo_store.h"

class DataFolder {
public:
    // Which stores were read again.
    struct Reloaded {
        bool todos = false;
        bool categories = false;
        bool any() const { return todos || categories; }
    };

    // The stores, loaded already, for the current directory.
    DataFolder(TodoStore& todos, CategoryStore& categories);
    ~DataFolder();
    DataFolder(const DataFolder&) = delete;
    DataFolder& operator=(const DataFolder&) = delete;

    // Reads again, under the shared lock, each file that changed since its store saw it. Does
    // nothing while a Change is made: that change reads and writes the files under its lock.
    Reloaded refresh();

    // One change to the files: the exclusive lock from construction to destruction, and each
    // file that changed read again first. The stores' saves go inside it.
    class Change {
    public:
        explicit Change(DataFolder& folder);
        ~Change();
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;
        const Reloaded& reloaded() const { return reloaded_; }

    private:
        DataFolder& folder_;
        FolderLock lock_;
        Reloaded reloaded_;
    };

    TodoStore& todos;
    CategoryStore& categories;

private:
    Reloaded reloadChanged();

    int fd_;
    bool changing_;
};

#endif
