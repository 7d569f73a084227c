// The fields of a to-do that a task carries, in the record's order: what the sync compares,
// merges and writes one by one, and what the mapping sets on a VTODO or reads from one.
#ifndef PINDLE_TODO_FIELD_H
#define PINDLE_TODO_FIELD_H

#include <bitset>

namespace TodoField {

enum Index { Date, Priority, Completed, Category, Description, Notes, kCount };

using Set = std::bitset<kCount>;

inline Set all() {
    return Set().set();
}

} // namespace TodoField

#endif
