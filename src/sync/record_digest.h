// What the sync remembers of a local to-do to find it again: a digest of the whole record and a
// short one of each field, so that a record changed since the last sync can still be told from
// a new one by how much of it stayed the same.
#ifndef PINDLE_RECORD_DIGEST_H
#define PINDLE_RECORD_DIGEST_H

#include "todo_field.h"
#include "todo_store.h"

#include <array>
#include <cstdint>

struct RecordDigest {
    using Fields = std::array<std::uint32_t, TodoField::kCount>;

    std::uint64_t whole = 0;
    Fields fields{};

    static RecordDigest of(const TodoRecord& record);

    // How alike two records look, from the fields they share: the description counts most, the
    // notes next when there are any, each other field a little.
    static int likeness(const RecordDigest& a, const RecordDigest& b);
};

#endif
