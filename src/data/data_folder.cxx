// The data folder: a descriptor of the current directory for its lock, and the stores' stamps.
#include "data_folder.h"

#include <fcntl.h>
#include <unistd.h>

DataFolder::DataFolder(TodoStore& todoStore, CategoryStore& categoryStore)
    : todos(todoStore), categories(categoryStore),
      fd_(open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
      reads_(std::make_shared<FolderReads>(fd_)) {
    todos.shareReads(reads_);
    categories.shareReads(reads_);
}

DataFolder::~DataFolder() {
    todos.shareReads(nullptr);
    categories.shareReads(nullptr);
    reads_->close();
    if (fd_ >= 0)
        close(fd_);
}

DataFolder::Reloaded DataFolder::refresh(Notes notes) {
    // A second flock on the same descriptor would turn the change's lock into this one.
    if (reads_->held())
        return {};
    if (SaveJournal::leftOver()) {
        FolderReads::Hold hold(*reads_, FolderLock::Mode::Exclusive);
        recover();
        return reloadChanged(notes);
    }
    FolderReads::Hold hold(*reads_, FolderLock::Mode::Shared);
    return reloadChanged(notes);
}

// Under the exclusive lock; looked for again, as another program may have finished it.
void DataFolder::recover() {
    if (SaveJournal::leftOver())
        SaveJournal::recover();
}

// Notes that cannot be read under the lock were changed by a program that ignores it: the file
// is read again, a few times at most, for it to hold still.
DataFolder::Reloaded DataFolder::reloadChanged(Notes notes) {
    Reloaded reloaded;
    for (int tries = 0; tries < 3; tries++) {
        if (!todos.changedOnDisk() && (notes == Notes::WhenAsked || todos.readAllNotes()))
            break;
        todos.reload();
        reloaded.todos = true;
    }
    if (categories.changedOnDisk()) {
        categories.reload();
        reloaded.categories = true;
    }
    return reloaded;
}

DataFolder::Change::Change(DataFolder& folder)
    : folder_(folder), hold_(*folder.reads_, FolderLock::Mode::Exclusive),
      reloaded_((folder.recover(), folder.reloadChanged(Notes::WhenAsked))),
      batch_(std::make_unique<SaveBatch>()) {
    join(batch_.get());
}

DataFolder::Change::~Change() {
    commit();
    join(nullptr);
}

void DataFolder::Change::commit() {
    batch_->commit();
    batch_ = std::make_unique<SaveBatch>();
    join(batch_.get());
}

void DataFolder::Change::join(SaveBatch* batch) {
    folder_.todos.joinBatch(batch);
    folder_.categories.joinBatch(batch);
}
