// Finding the to-dos of the last sync in the file as it is now: each case is the old and the new
// list as letters (a capital and its small letter are one to-do before and after a change of its
// description, its notes the same; '*' is a new to-do with its own date, priority and category,
// '+' one with its own date and priority) and where each old one was found.
#include "local_matcher.h"
#include "support/store_helpers.h"

#include <gtest/gtest.h>

#include <cctype>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

namespace {

std::vector<RecordDigest> digests(const std::string& letters) {
    std::vector<RecordDigest> out;
    for (char letter : letters) {
        bool fresh = letter == '*' || letter == '+';
        std::string notes(1, static_cast<char>(std::toupper(static_cast<unsigned char>(letter))));
        out.push_back(RecordDigest::of(
            *todoRecord({fresh ? 7 : 3, 1, 2030, fresh ? 4 : 0, 0,
                         letter == '*' ? "Work" : "Unassigned", std::string(1, letter), notes})));
    }
    return out;
}

TEST(LocalMatcher, FindsEachOldToDoOrItsGap) {
    const std::tuple<const char*, const char*, std::vector<int>> cases[] = {
        {"ABC", "ABC", {0, 1, 2}},
        {"", "AB", {}},
        {"AB", "", {-1, -1}},
        {"ABC", "AbC", {0, 1, 2}},            // changed in place
        {"ABC", "AC", {0, -1, 1}},            // deleted
        {"AB", "AB*", {0, 1}},                // added at the end
        {"AB", "A*", {0, -1}},                // last deleted, a new one added
        {"AB", "Ab", {0, 1}},                 // last changed
        {"AB", "A+", {0, 1}},                 // last changed in all but category and state
        {"ABCD", "AcD", {0, -1, 1, 2}},       // one deleted, its neighbour changed
        {"ABCD", "abcD", {0, 1, 2, 3}},       // several changed before an unchanged one
        {"AAA", "AA", {0, 1, -1}},            // identical to-dos are interchangeable
        {"ABCDE", "BCDEA", {-1, 0, 1, 2, 3}}, // never reordered: A at the end is another
        {"ABC", "*AC", {1, -1, 2}},           // B deleted, one new in front: A and C unchanged
    };
    for (const auto& [last, now, found] : cases)
        EXPECT_EQ(LocalMatcher::match(digests(last), digests(now)), found) << last << " -> " << now;
}

// A gap too large to align (1,001 old by 1,000 new) pairs its to-dos in order, as the small
// gaps would; at the end of the list, where nothing follows to anchor it, it pairs none.
TEST(LocalMatcher, PairsAHugeGapInOrder) {
    auto numbered = [](const char* prefix, int count) {
        std::vector<RecordDigest> out;
        for (int i = 0; i < count; i++) {
            TodoRecord r;
            r.setDescription((prefix + std::to_string(i)).c_str());
            out.push_back(RecordDigest::of(r));
        }
        return out;
    };
    std::vector<RecordDigest> last = numbered("old ", 1001), now = numbered("new ", 1000);
    EXPECT_EQ(LocalMatcher::match(last, now), std::vector<int>(1001, -1));
    // Two unchanged at the end anchor it: each found where it is.
    for (const RecordDigest& d : digests("YZ")) {
        last.push_back(d);
        now.push_back(d);
    }
    std::vector<int> inOrder(1000);
    std::iota(inOrder.begin(), inOrder.end(), 0);
    inOrder.insert(inOrder.end(), {-1, 1000, 1001});
    EXPECT_EQ(LocalMatcher::match(last, now), inOrder);
}

} // namespace
