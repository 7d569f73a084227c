// Where the to-do records live: blocks of 2 MB that the kernel may back with one huge page each,
// cut into slots of one record. A load of 10,000 records of a few hundred bytes would otherwise
// touch a thousand fresh pages, and where each first touch of a page is a costly trap into the
// kernel (a virtual machine's), those traps were most of a start-up. A freed slot is used again;
// blocks are kept for the life of the program, as the records mostly are. One thread only.
#ifndef PINDLE_RECORD_ARENA_H
#define PINDLE_RECORD_ARENA_H

#include <cstddef>
#include <vector>

class RecordArena {
public:
    static constexpr std::size_t kBlockSize = std::size_t{2} << 20;

    // Slots of `size` bytes, rounded up to the strictest alignment.
    explicit RecordArena(std::size_t size);
    ~RecordArena();
    RecordArena(const RecordArena&) = delete;
    RecordArena& operator=(const RecordArena&) = delete;

    // Room for one record; throws std::bad_alloc as new does.
    void* take();
    // Gives back what take() returned.
    void give(void* slot);

private:
    struct Free {
        Free* next;
    };

    std::size_t size_;
    std::vector<void*> blocks_;
    char* next_;
    char* end_;
    Free* free_;
};

#endif
