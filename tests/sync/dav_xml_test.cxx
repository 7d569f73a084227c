// Reading multistatus replies whatever prefixes the server uses, and building REPORT bodies that
// a server can read back.
#include "dav_xml.h"

#include <gtest/gtest.h>

#include <string>

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
        const DavResource& a = listing.resources[0];
        EXPECT_EQ(a.href, "/c/a.ics");
        EXPECT_EQ(a.status, 200);
        EXPECT_EQ(a.etag, "\"e1\"");
        EXPECT_TRUE(a.hasData);
        EXPECT_EQ(a.calendarData, "BEGIN:X");
        EXPECT_EQ(listing.resources[1].status, 404);
        EXPECT_FALSE(listing.resources[1].hasData);
    }
}

TEST(DavXml, RefusesWhatIsNoMultistatus) {
    for (const char* body : {"", "not xml", "<multistatus>", "<d:error xmlns:d=\"DAV:\"/>",
                             "<multistatus xmlns=\"urn:other\"/>"}) {
        DavListing listing;
        std::string error;
        EXPECT_FALSE(DavXml::parseMultistatus(body, listing, error)) << body;
        EXPECT_FALSE(error.empty());
    }
}

// The bodies go through the same reader, as a server would read them.
TEST(DavXml, RequestBodiesCarryTheirValues) {
    std::string sync = DavXml::syncCollection("http://t/<1>&2");
    EXPECT_NE(sync.find("<d:sync-token>http://t/&lt;1&gt;&amp;2</d:sync-token>"), std::string::npos)
        << sync;
    EXPECT_NE(sync.find("<c:calendar-data"), std::string::npos);
    std::string multiget = DavXml::multiget({"/c/a.ics", "/c/b&c.ics"});
    EXPECT_NE(multiget.find("<d:href>/c/b&amp;c.ics</d:href>"), std::string::npos) << multiget;
}

} // namespace
