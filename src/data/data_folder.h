// A data folder's two files as one: the to-do and category stores that hold them, the folder's
// lock around every read and every change, and the check whether another program changed a file
// since its store last read or wrote it. The program, pindle_sync and pindle_export all work on
// their folder, the current directory, through it. A writer makes each change inside a Change:
// the folder is locked, whatever changed is read again, and only then is the change applied to
// the to-dos and categories as they are now, so that nothing another program wrote is lost. The
// stores' saves inside a Change are made together when it ends, as one save atomic against a
// crash; a save a crash cut short is finished, or thrown away, wherever the folder is opened.
// Notes that a load left in the file are read later under the folder's shared lock, through it.
#ifndef PINDLE_DATA_FOLDER_H
#define PINDLE_DATA_FOLDER_H

#include "category_store.h"
#include "folder_lock.h"
#include "folder_reads.h"
#include "save_batch.h"
#include "todo_store.h"

#include <memory>

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

    // What a refresh brings into memory: what the list shows (the notes are read when somebody
    // asks for them), or all of it, for a program that needs every to-do whole, as one state of
    // the files.
    enum class Notes { WhenAsked, All };

    // Reads again, under the shared lock, each file that changed since its store saw it; first,
    // under the exclusive lock, finishes a save that a crash cut short. Does nothing while a
    // Change is made: that change reads and writes the files under its lock.
    Reloaded refresh(Notes notes = Notes::WhenAsked);

    // One change to the files: the exclusive lock from construction to destruction, a save a
    // crash cut short finished and each file that changed read again first. The stores' saves
    // go inside it and are made, together, when it ends or commit() is called.
    class Change {
    public:
        explicit Change(DataFolder& folder);
        ~Change();
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;
        const Reloaded& reloaded() const { return reloaded_; }

        // Makes the saves asked for so far.
        void commit();

    private:
        void join(SaveBatch* batch);

        DataFolder& folder_;
        FolderReads::Hold hold_;
        Reloaded reloaded_;
        std::unique_ptr<SaveBatch> batch_;
    };

    TodoStore& todos;
    CategoryStore& categories;

private:
    Reloaded reloadChanged(Notes notes);
    void recover();

    int fd_;
    std::shared_ptr<FolderReads> reads_;
};

#endif
