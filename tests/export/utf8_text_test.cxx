// Making record bytes valid UTF-8: the malformed sequences the fixture files do not hold, each
// byte of which comes out as its Latin-1 character, and the size given as the end.
#include "utf8_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Utf8Text, KeepsWellFormedTextAndReadsTheRestAsLatin1) {
    const std::pair<std::string, std::string> cases[] = {
        {"x\xe2\x82", "x\xc3\xa2\xc2\x82"},                       // cut by the end
        {"\xc0\xaf", "\xc3\x80\xc2\xaf"},                         // overlong
        {"\xe0\x80\xaf", "\xc3\xa0\xc2\x80\xc2\xaf"},             // overlong, three bytes
        {"\xf4\x90\x80\x80", "\xc3\xb4\xc2\x90\xc2\x80\xc2\x80"}, // past U+10FFFF
        {"\x80", "\xc2\x80"},                                     // a lone continuation
        {std::string("abc\xc3\xa9", 4), "abc\xc3\x83"},           // the size given ends it
    };
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(Utf8Text::fromBytes(bytes.data(), bytes.size()), text) << bytes;
}

} // namespace
