// Making record bytes valid UTF-8: what passes through untouched and what is read as Latin-1.
#include "utf8_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Case {
    const char* name;
    std::string bytes;
    std::string expected;
};

TEST(Utf8Text, KeepsWellFormedTextAndReadsTheRestAsLatin1) {
    const Case cases[] = {
        {"ascii", "plain text", "plain text"},
        {"two-byte", "caf\xc3\xa9", "caf\xc3\xa9"},
        {"four-byte", "\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80"},
        {"latin-1 letter", "caf\xe9", "caf\xc3\xa9"},
        {"truncated sequence",
         "\xe2\x82"
         "A",
         "\xc3\xa2\xc2\x82"
         "A"},
        {"sequence cut by the end", "x\xe2\x82", "x\xc3\xa2\xc2\x82"},
        {"overlong slash", "\xc0\xaf", "\xc3\x80\xc2\xaf"},
        {"overlong three-byte", "\xe0\x80\xaf", "\xc3\xa0\xc2\x80\xc2\xaf"},
        {"surrogate", "\xed\xa0\x80", "\xc3\xad\xc2\xa0\xc2\x80"},
        {"past U+10FFFF", "\xf4\x90\x80\x80", "\xc3\xb4\xc2\x90\xc2\x80\xc2\x80"},
        {"lone continuation", "\x80", "\xc2\x80"},
        {"0xFF", "\xff", "\xc3\xbf"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Utf8Text::fromBytes(c.bytes.data(), c.bytes.size()), c.expected) << c.name;
}

TEST(Utf8Text, StopsAtTheGivenSize) {
    const char bytes[] = "abc\xc3\xa9";
    EXPECT_EQ(Utf8Text::fromBytes(bytes, 4), "abc\xc3\x83");
}

} // namespace
