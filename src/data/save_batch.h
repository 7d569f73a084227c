// One save of the data files, atomic against a crash: the stores that save in it, each planned
// once when the batch commits, with the records it holds then. Changes made in place go through
// the save journal first; a file rewritten whole is written beside it and renamed over it; a
// batch that touches both files commits them through one journal, so that after a crash the
// folder holds both files as they were before the save or both as they are after it. A batch with
// nothing to write writes nothing and asks nothing of the disk. Failures end the program with
// status 200.
#ifndef PINDLE_SAVE_BATCH_H
#define PINDLE_SAVE_BATCH_H

#include "file_stamp.h"
#include "save_journal.h"
#include "save_target.h"

#include <functional>
#include <memory>
#include <vector>

class SaveBatch {
public:
    SaveBatch();
    ~SaveBatch();
    SaveBatch(const SaveBatch&) = delete;
    SaveBatch& operator=(const SaveBatch&) = delete;

    // Saves `owner` with the batch: `plan` is called when the batch commits, once however often
    // the owner is added.
    void add(const void* owner, std::function<void(SaveBatch&)> plan);

    // For a plan: the data file `name`, or null when it cannot be opened and need not be.
    // `committed` is given the file's stamp once the batch has committed.
    SaveTarget* open(const char* name, const FileStamp& lastSeen, bool mustOpen,
                     std::function<void(const FileStamp&)> committed);
    // For a plan: room for `size` bytes that go to `target` at `offset`, in place.
    unsigned char* write(SaveTarget& target, std::uint64_t offset, std::size_t size);

    // Plans every owner's save, then carries the batch out.
    void commit();

private:
    int fileIndex(const SaveTarget& target) const;
    SaveJournal& journal();
    void carryOut();
    [[noreturn]] static void failWrite();

    std::vector<std::pair<const void*, std::function<void(SaveBatch&)>>> plans_;
    std::vector<std::unique_ptr<SaveTarget>> targets_;
    std::vector<std::function<void(const FileStamp&)>> committed_;
    std::unique_ptr<SaveJournal> journal_;
};

#endif
