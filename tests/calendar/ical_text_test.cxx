// The texts a to-do is made of, through the iCalendar both companions write and read: every byte
// back as it went, lines within 75 octets and never broken inside a character; and what other
// writers put there (escaped list separators, odd folds) read as RFC 5545 means it.
#include "ical_text.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using Component = std::unique_ptr<icalcomponent, decltype(&icalcomponent_free)>;

std::string firstText(icalcomponent* vtodo, icalproperty_kind kind) {
    icalproperty* p = icalcomponent_get_first_property(vtodo, kind);
    return p == nullptr ? "(none)" : icalvalue_get_text(icalproperty_get_value(p));
}

// Every physical line within 75 octets, and no continuation starting inside a character.
void expectFolded(const std::string& ics) {
    std::size_t at = 0;
    while (at < ics.size()) {
        std::size_t end = ics.find("\r\n", at);
        ASSERT_NE(end, std::string::npos);
        EXPECT_LE(end - at, 75u) << ics.substr(at, end - at);
        bool continues = ics[at] == ' ' && end > at + 1;
        EXPECT_FALSE(continues && (static_cast<unsigned char>(ics[at + 1]) & 0xC0) == 0x80) << ics;
        at = end + 2;
    }
}

std::string repeated(const std::string& text, int times) {
    std::string out;
    for (int i = 0; i < times; i++)
        out += text;
    return out;
}

TEST(IcalText, EveryTextComesBackAsItWent) {
    std::vector<std::string> texts({"Work, home; misc", "back\\slash", "a\\,b", "x\\", ",", ";;",
                                    "trail,", "notes end in a space ", "  both ends  ",
                                    "\tTab\tedges\t", "line\nbreak\n", "\n\nblank lines\n\n",
                                    "\"quoted\":colon", "caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x98\x80",
                                    "#0", ""});
    // Characters of two, three and four bytes at every offset from the fold.
    for (const char* character : {"\xc3\xa9", "\xe2\x82\xac", "\xf0\x9f\x98\x80"}) {
        for (int offset = 0; offset < 4; offset++)
            texts.push_back(std::string(offset, 'a') + repeated(character, 60) + ", " +
                            repeated(character, 30));
    }
    texts.push_back(repeated("word, ", 6000));
    const std::pair<icalproperty_kind, icalproperty* (*)(const char*)> kinds[] = {
        {ICAL_SUMMARY_PROPERTY, icalproperty_new_summary},
        {ICAL_DESCRIPTION_PROPERTY, icalproperty_new_description},
        {ICAL_CATEGORIES_PROPERTY, icalproperty_new_categories},
    };
    for (const auto& [kind, make] : kinds) {
        for (const std::string& text : texts) {
            SCOPED_TRACE(icalproperty_kind_to_string(kind) + (": " + text.substr(0, 40)));
            Component vtodo(icalcomponent_new(ICAL_VTODO_COMPONENT), &icalcomponent_free);
            icalcomponent_add_property(vtodo.get(), make(text.c_str()));
            // A second category, so that the first has to be told from it.
            icalcomponent_add_property(vtodo.get(), icalproperty_new_categories("next"));
            std::string ics = IcalText::write(vtodo.get());
            expectFolded(ics);
            Component back(IcalText::parse(ics), &icalcomponent_free);
            ASSERT_TRUE(back);
            EXPECT_EQ(firstText(back.get(), kind), text);
        }
    }
}

TEST(IcalText, ReadsOtherWritersAsTheRfcMeansIt) {
    const std::pair<const char*, const char*> cases[] = {
        {"CATEGORIES:a\\,b,c", "a,b"},
        {"CATEGORIES:a\\\\,b", "a\\"},
        {"CATEGORIES: spaced , b", " spaced "},
        {"categories;LANGUAGE=\"x:y,z\":lower-case name, quoted colon", "lower-case name"},
        {"CATEGORIES:,second", ""},
        {"CATEGORIES:tab\r\n\tfolded\r\n  and spaced", "tabfolded and spaced"},
        {"CATEGORIES:caf\xc3\r\n \xa9 folded inside a character",
         "caf\xc3\xa9 folded inside a character"},
        {"CATEGORIES:\\N\\n\\;\\x", "\n\n;\\x"},
    };
    for (const auto& [line, first] : cases) {
        for (const char* newline : {"\r\n", "\n"}) {
            std::string ics =
                std::string("BEGIN:VTODO") + newline + line + newline + "END:VTODO" + newline;
            Component vtodo(IcalText::parse(ics), &icalcomponent_free);
            ASSERT_TRUE(vtodo) << line;
            EXPECT_EQ(firstText(vtodo.get(), ICAL_CATEGORIES_PROPERTY), first) << line;
        }
    }
}

TEST(IcalText, WritesACategoryAsOneEscapedName) {
    Component vtodo(icalcomponent_new(ICAL_VTODO_COMPONENT), &icalcomponent_free);
    icalcomponent_add_property(vtodo.get(), icalproperty_new_categories("Work, home; misc\\"));
    EXPECT_EQ(IcalText::write(vtodo.get()),
              "BEGIN:VTODO\r\nCATEGORIES:Work\\, home\\; misc\\\\\r\nEND:VTODO\r\n");
}

} // namespace
