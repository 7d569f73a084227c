// The record arena: aligned blocks marked for huge pages, a bump pointer and a free list. A slot
// given back is poisoned for AddressSanitizer, which then reports any use of a freed record.
#include "record_arena.h"

#include <cstdlib>
#include <new>
#include <sanitizer/asan_interface.h>
#include <sys/mman.h>

RecordArena::RecordArena(std::size_t size)
    : size_((size + alignof(std::max_align_t) - 1) / alignof(std::max_align_t) *
            alignof(std::max_align_t)),
      next_(nullptr), end_(nullptr), free_(nullptr) {}

RecordArena::~RecordArena() {
    for (void* block : blocks_)
        std::free(block);
}

void* RecordArena::take() {
    if (free_ != nullptr) {
        ASAN_UNPOISON_MEMORY_REGION(free_, size_);
        Free* slot = free_;
        free_ = slot->next;
        return slot;
    }
    if (next_ == nullptr || static_cast<std::size_t>(end_ - next_) < size_) {
        void* block = std::aligned_alloc(kBlockSize, kBlockSize);
        if (block == nullptr)
            throw std::bad_alloc();
        // Only a hint: without transparent huge pages the block is plain pages.
        madvise(block, kBlockSize, MADV_HUGEPAGE);
        blocks_.push_back(block);
        next_ = static_cast<char*>(block);
        end_ = next_ + kBlockSize;
    }
    void* slot = next_;
    next_ += size_;
    return slot;
}

void RecordArena::give(void* slot) {
    auto* freed = static_cast<Free*>(slot);
    freed->next = free_;
    free_ = freed;
    ASAN_POISON_MEMORY_REGION(slot, size_);
}
