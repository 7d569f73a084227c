// How a synced to-do settles when either side may have changed or deleted it since the last
// sync: field by field, three ways. Each side's fields now are compared with what that side had
// at the last sync, in that side's own terms (a digest per field), so that what the mapping
// fills in here for a task that lacks it (a date, a priority) is never taken for a change of
// the task. A field changed on one side is taken from that side; changed on both to the same
// value it stays; changed on both to different values, both versions are kept. A to-do deleted
// on one side and changed on the other is kept as changed. Decides only; the session carries
// it out.
#ifndef PINDLE_FIELD_MERGE_H
#define PINDLE_FIELD_MERGE_H

#include "record_digest.h"
#include "todo_field.h"

namespace FieldMerge {

using Fields = RecordDigest::Fields;

// One side of a synced to-do: its fields at the last sync, and now (null when it was deleted
// there).
struct Side {
    Fields base;
    const Fields* now;
};

enum class Fate {
    Same,        // neither side changed it, or both alike: nothing to write
    Merge,       // fromServer come down, fromHere go up; one of them may be empty
    KeepBoth,    // a field changed on both sides to different values
    DeleteHere,  // deleted on the server, unchanged here
    DeleteThere, // deleted here, unchanged on the server
    TakeBack,    // deleted here, changed on the server: it comes down again
    SendAgain,   // deleted on the server, changed here: it goes up again
    Forget,      // deleted on both sides
};

struct Result {
    Fate fate;
    TodoField::Set fromHere, fromServer;
};

// `agree` holds the fields whose values are now the same on both sides, in the record's terms;
// only those changed on both sides are looked at.
Result merge(const Side& here, const Side& server, TodoField::Set agree);

} // namespace FieldMerge

#endif
