// UTF-8 in record bytes: texts cut to their fields never inside a character, whatever the bytes,
// and made valid UTF-8 for the companions, each byte outside a well-formed sequence read as its
// Latin-1 character.
#include "field_codec.h"
#include "utf8_text.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

TEST(Utf8Text, CutsTextsOnlyBetweenCharacters) {
    // The text, the room for it, the bytes of it that fit.
    const std::tuple<std::string, std::size_t, std::size_t> cases[] = {
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
        {"a\xC3\xA9\x80", 3, 3},        // a stray byte after a whole "é"
        {"a\xE0\x80\xAF", 2, 2},        // an overlong form is three characters, not one
        {"\xED\xA0\x80", 1, 1},         // so is a surrogate
    };
    for (const auto& [text, room, fit] : cases)
        EXPECT_EQ(Utf8Text::fitLength(text.data(), text.size(), room), fit)
            << text << " in " << room;
}

// Texts from elsewhere (a server) are made UTF-8 first, then cut as every field is.
TEST(Utf8Text, BoundedCopiesAndFitsEndOnACharacter) {
    char field[4];
    FieldCodec::copyBounded(field, "ab\xC3\xA9", field + sizeof field);
    EXPECT_STREQ(field, "ab");
    const std::string euro = "\xe2\x82\xac";
    const std::tuple<std::string, std::size_t, std::string> cases[] = {
        {euro + euro, 5, euro},
        {"\xe9t\xe9", 3, "\xc3\xa9t"},            // Latin-1 bytes become two each
        {"ok\xe2\x82", 50, "ok\xc3\xa2\xc2\x82"}, // a cut-off sequence is not UTF-8
        {"", 0, ""},
    };
    for (const auto& [text, bytes, fitted] : cases)
        EXPECT_EQ(Utf8Text::fit(text, bytes), fitted) << text << " " << bytes;
}

// The first and last code point of each length are kept as they are; the sequences next to
// those ruled out, and any other byte outside a well-formed sequence, are read as Latin-1.
TEST(Utf8Text, KeepsWellFormedSequencesAtTheirLimitsAndReadsTheRestAsLatin1) {
    const std::pair<std::string, std::size_t> wellFormed[] = {
        {"\x7f", 1},         {"\xc2\x80", 2},         {"\xdf\xbf", 2},
        {"\xe0\xa0\x80", 3}, {"\xed\x9f\xbf", 3},     {"\xee\x80\x80", 3},
        {"\xef\xbf\xbf", 3}, {"\xf0\x90\x80\x80", 4}, {"\xf4\x8f\xbf\xbf", 4},
    };
    for (const auto& [bytes, length] : wellFormed) {
        const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
        EXPECT_EQ(Utf8Text::sequenceLength(in, bytes.size()), length) << bytes;
        EXPECT_EQ(Utf8Text::fromBytes(bytes.data(), bytes.size()), bytes);
    }
    const std::pair<std::string, std::string> illFormed[] = {
        {"\xc0\xaf", "\xc3\x80\xc2\xaf"},                         // overlong
        {"\xc1\xbf", "\xc3\x81\xc2\xbf"},                         // overlong, the last
        {"\xe0\x9f\xbf", "\xc3\xa0\xc2\x9f\xc2\xbf"},             // overlong, three bytes
        {"\xed\xa0\x80", "\xc3\xad\xc2\xa0\xc2\x80"},             // a surrogate
        {"\xf0\x8f\xbf\xbf", "\xc3\xb0\xc2\x8f\xc2\xbf\xc2\xbf"}, // overlong, four bytes
        {"\xf4\x90\x80\x80", "\xc3\xb4\xc2\x90\xc2\x80\xc2\x80"}, // past U+10FFFF
        {"\xf5\x80\x80\x80", "\xc3\xb5\xc2\x80\xc2\x80\xc2\x80"}, // no lead byte
        {"\x80", "\xc2\x80"},                                     // a lone continuation
        {"\xe2\x82", "\xc3\xa2\xc2\x82"},                         // cut by the end
        {std::string("\xc3\xa9", 1), "\xc3\x83"},                 // by the size given
        {"\xe2\x28\xac", "\xc3\xa2(\xc2\xac"},                    // a continuation missing
        {"\xf0\x9f\x98\x28", "\xc3\xb0\xc2\x9f\xc2\x98("},        // the last one missing
    };
    for (const auto& [bytes, text] : illFormed) {
        const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
        EXPECT_EQ(Utf8Text::sequenceLength(in, bytes.size()), 0u) << bytes;
        EXPECT_EQ(Utf8Text::fromBytes(bytes.data(), bytes.size()), text) << bytes;
    }
}

} // namespace
