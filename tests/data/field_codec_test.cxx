// Cutting texts to their fields: never inside a UTF-8 character, whatever the bytes.
#include "field_codec.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(FieldCodec, CutsTextsOnlyBetweenCharacters) {
    struct Case {
        std::string text;
        std::size_t room;
        std::size_t fit;
    };
    const Case cases[] = {
        {"abc", 5, 3},                      // fits whole
        {"abcdef", 3, 3},                   // plain ASCII cut
        {"a\xC3\xA9z", 2, 1},               // "é" would be split
        {"a\xC3\xA9z", 3, 3},               // "é" just fits
        {"\xE2\x82\xAC\xE2\x82\xAC", 4, 3}, // the second "€" would be split after one byte
        {"\xE2\x82\xAC\xE2\x82\xAC", 5, 3}, // ... or after two
        {"\xF0\x9F\x98\x80!", 3, 0},        // nothing of a four-byte character
        {"\xF0\x9F\x98\x80!", 4, 4},
        {"caf\xE9 ok", 4, 4},           // Latin-1 "é": a character of one byte
        {"\x80\x80\x80\x80\x80", 2, 2}, // stray continuation bytes count one each
    };
    for (const Case& c : cases)
        EXPECT_EQ(FieldCodec::fitLength(c.text.data(), c.text.size(), c.room), c.fit)
            << c.text << " in " << c.room;
}

TEST(FieldCodec, BoundedCopyEndsOnACharacter) {
    char field[4];
    FieldCodec::copyBounded(field, "ab\xC3\xA9", field + sizeof field);
    EXPECT_STREQ(field, "ab");
}

} // namespace
