// The data folder: a descriptor of the current directory for its lock, and the stores' stamps.
#include "data_folder.h"

#include <fcntl.h>
#include <unistd.h>

DataFolder::DataFolder(TodoStore& todoStore, CategoryStore& categoryStore)
    : todos(todoStore), categories(categoryStore),
      fd_(open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)), changing_(false) {}

DataFolder::~DataFolder() {
    if (fd_ >= 0)
        close(fd_);
}

DataFolder::Reloaded DataFolder::refresh() {
    // A second flock on the same descriptor would turn the change's lock into this one.
    if (changing_)
        return {};
    if (SaveJournal::leftOver()) {
        FolderLock lock(fd_, FolderLock::Mode::Exclusive);
        recover();
        return reloadChanged();
    }
    FolderLock lock(fd_, FolderLock::Mode::Shared);
    return reloadChanged();
}

// Under the exclusive lock; looked for again, as another program may have finished it.
void DataFolder::recover() {
    if (SaveJournal::leftOver())
        SaveJournal::recover();
}

DataFolder::Reloaded DataFolder::reloadChanged() {
    Reloaded reloaded;
    if (todos.changedOnDisk()) {
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
    : folder_(folder), lock_(folder.fd_, FolderLock::Mode::Exclusive),
      reloaded_((folder.recover(), folder.reloadChanged())), batch_(std::make_unique<SaveBatch>()) {
    folder_.changing_ = true;
    join(batch_.get());
}

DataFolder::Change::~Change() {
    commit();
    join(nullptr);
    folder_.changing_ = false;
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
