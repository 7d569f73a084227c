// Common subsequence by Hunt and Szymanski (a longest increasing run over the matching
// positions), then a small alignment of each gap.
#include "local_matcher.h"

#include <algorithm>
#include <unordered_map>

namespace LocalMatcher {

namespace {

// A gap larger than this (old times new records) pairs its records in order instead of being
// aligned, which would take too long and too much memory.
constexpr long long kMaxAlignedCells = 1000000;
constexpr int kForcedPair = 1000;

struct Span {
    int oldBegin, oldEnd, newBegin, newEnd;
};

// Matches last[a, b) with now[c, d) on identical digests, writing pairs into `result`.
void commonSubsequence(const std::vector<RecordDigest>& last, const std::vector<RecordDigest>& now,
                       Span s, std::vector<int>& result) {
    std::unordered_map<std::uint64_t, std::vector<int>> positions;
    for (int j = s.newBegin; j < s.newEnd; j++)
        positions[now[j].whole].push_back(j);
    // tails[k]: the smallest new position that ends a run of k + 1 pairs; links for the way back.
    std::vector<int> tails, tailPair;
    std::vector<std::pair<int, int>> pairs;
    std::vector<int> previous;
    for (int i = s.oldBegin; i < s.oldEnd; i++) {
        auto found = positions.find(last[i].whole);
        if (found == positions.end())
            continue;
        for (auto j = found->second.rbegin(); j != found->second.rend(); ++j) {
            auto slot = std::lower_bound(tails.begin(), tails.end(), *j);
            auto k = static_cast<std::size_t>(slot - tails.begin());
            previous.push_back(k == 0 ? -1 : tailPair[k - 1]);
            pairs.emplace_back(i, *j);
            if (slot == tails.end()) {
                tails.push_back(*j);
                tailPair.push_back(static_cast<int>(pairs.size()) - 1);
            } else {
                *slot = *j;
                tailPair[k] = static_cast<int>(pairs.size()) - 1;
            }
        }
    }
    for (int p = tailPair.empty() ? -1 : tailPair.back(); p >= 0; p = previous[p])
        result[pairs[p].first] = pairs[p].second;
}

// Pairs the records of one gap, keeping order: the pairing with the greatest total weight.
void alignGap(const std::vector<RecordDigest>& last, const std::vector<RecordDigest>& now, Span s,
              bool atEnd, std::vector<int>& result) {
    int rows = s.oldEnd - s.oldBegin, cols = s.newEnd - s.newBegin;
    if (rows == 0 || cols == 0)
        return;
    if (static_cast<long long>(rows) * cols > kMaxAlignedCells) {
        for (int k = 0; !atEnd && k < std::min(rows, cols); k++)
            result[s.oldBegin + k] = s.newBegin + k;
        return;
    }
    auto weight = [&](int i, int j) {
        int like = RecordDigest::likeness(last[s.oldBegin + i], now[s.newBegin + j]);
        if (atEnd)
            return like >= kTailLikeness ? like : -1;
        return kForcedPair + like;
    };
    std::vector<int> score(static_cast<std::size_t>(rows + 1) * (cols + 1), 0);
    auto at = [&](int i, int j) -> int& {
        return score[static_cast<std::size_t>(i) * (cols + 1) + j];
    };
    for (int i = 1; i <= rows; i++) {
        for (int j = 1; j <= cols; j++) {
            int w = weight(i - 1, j - 1);
            at(i, j) = std::max({at(i - 1, j), at(i, j - 1), w >= 0 ? at(i - 1, j - 1) + w : -1});
        }
    }
    for (int i = rows, j = cols; i > 0 && j > 0;) {
        if (at(i, j) == at(i - 1, j)) {
            i--;
        } else if (at(i, j) == at(i, j - 1)) {
            j--;
        } else {
            result[s.oldBegin + i - 1] = s.newBegin + j - 1;
            i--;
            j--;
        }
    }
}

} // namespace

std::vector<int> match(const std::vector<RecordDigest>& last,
                       const std::vector<RecordDigest>& now) {
    std::vector<int> result(last.size(), -1);
    int oldSize = static_cast<int>(last.size()), newSize = static_cast<int>(now.size());
    // Most syncs find nearly everything unchanged: the common ends cost one pass.
    int head = 0;
    while (head < oldSize && head < newSize && last[head].whole == now[head].whole) {
        result[head] = head;
        head++;
    }
    int tail = 0;
    while (tail < oldSize - head && tail < newSize - head &&
           last[oldSize - 1 - tail].whole == now[newSize - 1 - tail].whole) {
        result[oldSize - 1 - tail] = newSize - 1 - tail;
        tail++;
    }
    commonSubsequence(last, now, {head, oldSize - tail, head, newSize - tail}, result);
    // Each gap runs from one matched pair to the next; the last one runs to the ends.
    int oldFrom = 0, newFrom = 0;
    for (int i = 0; i <= oldSize; i++) {
        if (i < oldSize && result[i] < 0)
            continue;
        int newTo = i < oldSize ? result[i] : newSize;
        alignGap(last, now, {oldFrom, i, newFrom, newTo}, i == oldSize, result);
        oldFrom = i + 1;
        newFrom = newTo + 1;
    }
    return result;
}

} // namespace LocalMatcher
