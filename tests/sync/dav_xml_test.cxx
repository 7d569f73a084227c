// Reading multistatus replies whatever prefixes the server uses, and refusing what is none (the
// hostile server test sends those to the whole sync, which also stops on the reason left behind,
// so only here is the refusal itself seen); the request bodies are Radicale's to check.
#include "dav_xml.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>

namespace {

TEST(DavXml, ReadsResponsesByNamespaceNotPrefix) {
    const char* bodies[] = {
        R"(<d:multistatus xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav">
           <d:sync-token>t1</d:sync-token>
           <d:response><d:href>/c/a.ics</d:href><d:propstat><d:status>HTTP/1.1 200 OK</d:status>
             <d:prop><d:getetag>"e1"</d:getetag><c:calendar-data>BEGIN:X</c:calendar-data>
             </d:prop></d:propstat></d:response>
           <d:response><d:href>/c/b.ics</d:href><d:status>HTTP/1.1 404 Not Found</d:status>
           </d:response></d:multistatus>)",
        R"(<multistatus xmlns="DAV:"><sync-token>t1</sync-token>
           <response><href>/c/a.ics</href><propstat><status>HTTP/1.1 200 OK</status>
             <prop><getetag>"e1"</getetag><C:calendar-data xmlns:C="urn:ietf:params:xml:ns:caldav"><![CDATA[BEGIN:X]]></C:calendar-data>
             </prop></propstat>
             <propstat><status>HTTP/1.1 404 Not Found</status><prop><getetag/></prop></propstat>
           </response>
           <response><href>/c/b.ics</href><status>HTTP/1.1 404 Not Found</status></response>
           <response><status>HTTP/1.1 200 OK</status></response></multistatus>)",
    };
    for (const char* body : bodies) {
        DavListing listing;
        std::string error;
        ASSERT_TRUE(DavXml::parseMultistatus(body, listing, error)) << error;
        EXPECT_EQ(listing.syncToken, "t1");
        ASSERT_EQ(listing.resources.size(), 2u) << body;
        const DavResource &a = listing.resources[0], &b = listing.resources[1];
        EXPECT_EQ(std::tie(a.href, a.status, a.etag, a.hasData, a.calendarData),
                  std::make_tuple("/c/a.ics", 200, "\"e1\"", true, "BEGIN:X"));
        EXPECT_EQ(std::tie(b.status, b.hasData), std::make_tuple(404, false));
    }
}

TEST(DavXml, RefusesWhatIsNoMultistatus) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "the server's reply is not XML: "},
        {"<d:multistatus xmlns:d=\"DAV:\"><d:response>", "the server's reply is not XML: "},
        {"<multistatus xmlns=\"urn:wrong\"/>", "the server's reply is not a WebDAV multistatus"},
    };
    for (const auto& [body, reason] : cases) {
        DavListing listing;
        std::string error;
        EXPECT_FALSE(DavXml::parseMultistatus(body, listing, error)) << body;
        EXPECT_EQ(error.rfind(reason, 0), 0u) << error;
    }
}

} // namespace
