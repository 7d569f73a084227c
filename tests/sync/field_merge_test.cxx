// How a synced to-do settles, from what each side did to each field since the last sync. Each
// side is six letters, one per field in the record's order (date, priority, completed, category,
// description, notes), '-' for a to-do deleted there. Here it was "aaaaaa" at the last sync; on
// the server "Naaaaa": the task had no DUE, which here reads as the date 'a' it was given, so
// that 'N' is no date in the server's own terms and a date in no others. Where both sides
// changed a field, the same letter is the same value.
#include "field_merge.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

using FieldMerge::Fate;

RecordDigest::Fields fields(const std::string& letters) {
    RecordDigest::Fields out{};
    for (int f = 0; f < TodoField::kCount; f++)
        out[f] = static_cast<unsigned char>(letters[f]);
    return out;
}

// The fields of a set as letters: "....x." for the description alone.
std::string marks(TodoField::Set set) {
    std::string out;
    for (int f = 0; f < TodoField::kCount; f++)
        out += set[f] ? 'x' : '.';
    return out;
}

TEST(FieldMerge, SettlesEachFieldFromTheSideThatChangedIt) {
    const std::tuple<const char*, const char*, Fate, const char*, const char*> cases[] = {
        // here, on the server, fate, fields that go up, fields that come down
        {"aaaaaa", "Naaaaa", Fate::Same, "......", "......"},  // the missing date is no change
        {"aaaaab", "Naaaaa", Fate::Merge, ".....x", "......"}, // notes here: up alone
        {"aaaaaa", "Nbaaaa", Fate::Merge, "......", ".x...."}, // priority there: down alone
        {"aaaaab", "Naxaaa", Fate::Merge, ".....x", "..x..."}, // ticked there, notes here
        {"baaaaa", "Naaaaa", Fate::Merge, "x.....", "......"}, // a date set here goes up
        {"aaaaaa", "baaaaa", Fate::Merge, "......", "x....."}, // one set there comes down
        {"bcdefg", "Naaaaa", Fate::Merge, "xxxxxx", "......"}, // every field here
        {"aaaaab", "Naaaab", Fate::Same, "......", "......"},  // both alike
        {"aaaaab", "Naaaac", Fate::KeepBoth, "......", "......"},
        {"baaaaa", "caaaaa", Fate::KeepBoth, "......", "......"},
        {"abaaab", "Nbaaac", Fate::KeepBoth, "......", "......"}, // one field apart is enough
        {"abaaaa", "Nbaaab", Fate::Merge, "......", ".....x"},    // priority alike, notes there
        {"-", "Naaaaa", Fate::DeleteThere, "......", "......"},
        {"-", "Naaaab", Fate::TakeBack, "......", "......"}, // changed there wins
        {"aaaaaa", "-", Fate::DeleteHere, "......", "......"},
        {"aaaaab", "-", Fate::SendAgain, "......", "......"}, // changed here wins
        {"-", "-", Fate::Forget, "......", "......"},
    };
    for (const auto& [here, there, fate, up, down] : cases) {
        RecordDigest::Fields hereNow = fields(here[0] == '-' ? "------" : here);
        RecordDigest::Fields thereNow = fields(there[0] == '-' ? "------" : there);
        TodoField::Set agree;
        for (int f = 0; f < TodoField::kCount; f++)
            agree[f] = hereNow[f] == thereNow[f];
        FieldMerge::Result result =
            FieldMerge::merge({fields("aaaaaa"), here[0] == '-' ? nullptr : &hereNow},
                              {fields("Naaaaa"), there[0] == '-' ? nullptr : &thereNow}, agree);
        EXPECT_EQ(std::make_tuple(result.fate, marks(result.fromHere), marks(result.fromServer)),
                  std::make_tuple(fate, std::string(up), std::string(down)))
            << here << " / " << there;
    }
}

} // namespace
