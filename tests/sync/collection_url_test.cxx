// One spelling of a collection's URL, however a person typed it or a server wrote its href.
#include "collection_url.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

TEST(CollectionUrl, SpellsEachCollectionOneWay) {
    const std::pair<const char*, const char*> cases[] = {
        {"https://dav.example/alice/tasks/", "https://dav.example/alice/tasks/"},
        {"https://dav.example/alice/tasks", "https://dav.example/alice/tasks/"},
        {"HTTPS://Dav.Example:443/alice/tasks", "https://dav.example/alice/tasks/"},
        {"http://dav.example:80/t/", "http://dav.example/t/"},
        {"https://dav.example:8443/t", "https://dav.example:8443/t/"},
        {"http://[::1]:5232/t", "http://[::1]:5232/t/"},
        {"https://dav.example", "https://dav.example/"},
        {"https://dav.example/%7ealice/t%61sks%5F1/", "https://dav.example/~alice/tasks_1/"},
        {"https://dav.example/cal%20one/caf\xc3\xa9/", "https://dav.example/cal%20one/caf%C3%A9/"},
        {"https://dav.example/caf%c3%a9/", "https://dav.example/caf%C3%A9/"},
        {"https://dav.example/a%2fb/", "https://dav.example/a%2Fb/"}, // not a second segment
        {"https://dav.example/a/./b/../c", "https://dav.example/a/c/"},
        {"https://dav.example/t/?x=1", "https://dav.example/t/?x=1"},
        {"dav.example/t/", ""},
        {"", ""},
    };
    for (const auto& [url, normal] : cases)
        EXPECT_EQ(CollectionUrl::normal(url), normal) << url;
}

TEST(CollectionUrl, ResolvesAServersHrefs) {
    const std::pair<const char*, const char*> cases[] = {
        {"/dav/calendars/alice/", "https://dav.example/dav/calendars/alice/"},
        {"/dav/calendars/alice", "https://dav.example/dav/calendars/alice/"},
        {"tasks/", "https://dav.example/dav/principals/tasks/"},
        {"../calendars/", "https://dav.example/dav/calendars/"},
        {"https://Other.Example/x", "https://other.example/x/"},
    };
    for (const auto& [href, url] : cases)
        EXPECT_EQ(CollectionUrl::resolve("https://dav.example/dav/principals/", href), url) << href;
}

} // namespace
