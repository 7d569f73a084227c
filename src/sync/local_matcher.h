// Finds the to-dos of the last sync in the local file as it is now. The file gives a record no
// identity, but the program never reorders it: records change in place, new ones go to the end
// and deleted ones leave a gap. So the records that did not change are matched first, as the
// longest common subsequence of whole-record digests, and each gap between two of them pairs
// its old and new records by how alike they are, keeping their order.
#ifndef PINDLE_LOCAL_MATCHER_H
#define PINDLE_LOCAL_MATCHER_H

#include "record_digest.h"

#include <vector>

namespace LocalMatcher {

// A new record in a gap at the end is taken for an old one changed when they are at least this
// alike (two fields in common); before the end, where new records cannot be, any pairing is
// taken. Taking a deleted and an added to-do for one changed costs nothing but the task's
// identity; taking a changed one for deleted and added would lose what other clients keep on
// its task, so the bar is low.
constexpr int kTailLikeness = 2;

// For each digest of `last`, the index in `now` of the record it became, or -1 when it is gone.
std::vector<int> match(const std::vector<RecordDigest>& last, const std::vector<RecordDigest>& now);

} // namespace LocalMatcher

#endif
