// Making record bytes valid UTF-8: the malformed sequences the fixture files do not hold, each
// byte of which must come out as its Latin-1 character.
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
        {"sequence cut by the end", "x\xe2\x82", "x\xc3\xa2\xc2\x82"},
        {"overlong slash", "\xc0\xaf", "\xc3\x80\xc2\xaf"},
        {"overlong three-byte", "\xe0\x80\xaf", "\xc3\xa0\xc2\x80\xc2\xaf"},
        {"past U+10FFFF", "\xf4\x90\x80\x80", "\xc3\xb4\xc2\x90\xc2\x80\xc2\x80"},
        {"lone continuation", "\x80", "\xc2\x80"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Utf8Text::fromBytes(c.bytes.data(), c.bytes.size()), c.expected) << c.name;
}

TEST(Utf8Text, StopsAtTheGivenSize) {
    const char bytes[] = "abc\xc3\xa9";
    EXPECT_EQ(Utf8Text::fromBytes(bytes, 4), "abc\xc3\x83");
}

} // namespace
