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
    FolderLock lock(fd_, FolderLock::Mode::Shared);
    return reloadChanged();
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
      reloaded_(folder.reloadChanged()) {
    folder_.changing_ = true;
}

DataFolder::Change::~Change() {
    folder_.changing_ = false;
}
