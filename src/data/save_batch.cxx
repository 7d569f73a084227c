// Save batches: the plans run, the new whole files made durable, the journal written and made
// durable when anything changes in place or more than one file changes, then carried out.
#include "save_batch.h"

#include "data_file.h"
#include "data_report.h"

#include <unistd.h>

namespace {
const char* const kFiles[] = {"pindle_todo.db", "cat.db"};
} // namespace

SaveBatch::SaveBatch() = default;
SaveBatch::~SaveBatch() = default;

void SaveBatch::add(const void* owner, std::function<void(SaveBatch&)> plan) {
    for (const auto& [known, planned] : plans_) {
        if (known == owner)
            return;
    }
    plans_.emplace_back(owner, std::move(plan));
}

SaveTarget* SaveBatch::open(const char* name, const FileStamp& lastSeen, bool mustOpen,
                            std::function<void(const FileStamp&)> committed) {
    auto target = std::make_unique<SaveTarget>(name, lastSeen, mustOpen);
    if (!target->isOpen())
        return nullptr;
    targets_.push_back(std::move(target));
    committed_.push_back(std::move(committed));
    return targets_.back().get();
}

int SaveBatch::fileIndex(const SaveTarget& target) const {
    return target.name() == kFiles[0] ? 0 : 1;
}

SaveJournal& SaveBatch::journal() {
    if (!journal_)
        journal_ = std::make_unique<SaveJournal>(std::vector<std::string>(kFiles, kFiles + 2));
    return *journal_;
}

unsigned char* SaveBatch::write(SaveTarget& target, std::uint64_t offset, std::size_t size) {
    unsigned char* room = journal().write(fileIndex(target), offset, size);
    if (room == nullptr)
        failWrite();
    return room;
}

void SaveBatch::commit() {
    // A save that a crash cut short is finished, or thrown away, before this one is planned.
    if (SaveJournal::leftOver())
        SaveJournal::recover();
    for (auto& [owner, plan] : plans_)
        plan(*this);
    carryOut();
    for (std::size_t i = 0; i < targets_.size(); i++)
        committed_[i](targets_[i]->finish());
}

// One file rewritten whole and nothing else is replaced by a rename alone; anything more goes
// through the journal.
void SaveBatch::carryOut() {
    std::vector<SaveTarget*> renamed;
    for (const auto& target : targets_) {
        if (target->whole())
            target->finishWhole();
        if (target->whole() && !target->direct())
            renamed.push_back(target.get());
        else if (!target->whole() && target->lengthChanges())
            journal().setLength(fileIndex(*target), target->length());
    }
    if (!journal_ && renamed.size() == 1) {
        const std::string fresh = SaveJournal::newFileName(renamed[0]->name());
        if (rename(fresh.c_str(), renamed[0]->name().c_str()) != 0 || !DataFile::syncFolder())
            failWrite();
        return;
    }
    if (!journal_ && renamed.empty())
        return;
    for (SaveTarget* target : renamed)
        journal().replace(fileIndex(*target));
    if (!journal_->commit() || !journal_->apply())
        failWrite();
}

void SaveBatch::failWrite() {
    DataReport::fail("could not write records!");
}
