// Reading multistatus replies whatever prefixes the server uses, and refusing what is none (the
// hostile server test sends those to the whole sync, which also stops on the reason left behind,
// so only here is the refusal itself seen); the request bodies are Radicale's to check.
#include "dav_xml.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

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

// What tells a task list from other calendars, a principal and a calendar home: a calendar
// that lists no components takes them all (RFC 4791 5.2.3).
TEST(DavXml, ReadsWhatFindsATaskList) {
    DavListing listing;
    std::string error;
    ASSERT_TRUE(DavXml::parseMultistatus(
        R"(<multistatus xmlns="DAV:" xmlns:C="urn:ietf:params:xml:ns:caldav">
           <response><href>/home/</href><propstat><status>HTTP/1.1 200 OK</status><prop>
             <resourcetype><collection/></resourcetype>
             <current-user-principal><href>/p/alice/</href></current-user-principal>
             <C:calendar-home-set><href>/home/</href></C:calendar-home-set></prop></propstat>
             <propstat><status>HTTP/1.1 404 Not Found</status><prop><displayname/></prop>
           </propstat></response>
           <response><href>/home/tasks/</href><propstat><status>HTTP/1.1 200 OK</status><prop>
             <resourcetype><collection/><C:calendar/></resourcetype><displayname>Tasks</displayname>
             <C:supported-calendar-component-set><C:comp name="VEVENT"/><C:comp name="VTODO"/>
             </C:supported-calendar-component-set></prop></propstat></response>
           <response><href>/home/events/</href><propstat><status>HTTP/1.1 200 OK</status><prop>
             <resourcetype><collection/><C:calendar/></resourcetype>
             <C:supported-calendar-component-set><C:comp name="VEVENT"/>
             </C:supported-calendar-component-set></prop></propstat></response>
           <response><href>/home/any/</href><propstat><status>HTTP/1.1 200 OK</status><prop>
             <resourcetype><collection/><C:calendar/></resourcetype></prop></propstat>
           </response>
           <response><href>/home/Inbox/</href><propstat><status>HTTP/1.1 200 OK</status><prop>
             <resourcetype><collection/><C:schedule-inbox/></resourcetype>
             <C:supported-calendar-component-set><C:comp name="VTODO"/>
             </C:supported-calendar-component-set></prop></propstat></response></multistatus>)",
        listing, error))
        << error;
    std::vector<std::tuple<std::string, bool, bool, std::string, std::string, std::string>> read;
    for (const DavResource& r : listing.resources)
        read.emplace_back(r.href, r.isCalendar, r.holdsTodos, r.displayName, r.principal,
                          r.calendarHome);
    EXPECT_EQ(read, (decltype(read){{"/home/", false, false, "", "/p/alice/", "/home/"},
                                    {"/home/tasks/", true, true, "Tasks", "", ""},
                                    {"/home/events/", true, false, "", "", ""},
                                    {"/home/any/", true, true, "", "", ""},
                                    {"/home/Inbox/", false, false, "", "", ""}}));
}

TEST(DavXml, NamesTheConditionAnErrorBodyGives) {
    const std::pair<const char*, const char*> cases[] = {
        {R"(<d:error xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav"><c:valid-calendar-data/>
            </d:error>)",
         "valid-calendar-data"},
        {R"(<error xmlns="DAV:"><no-uid-conflict><href>/x</href></no-uid-conflict></error>)",
         "no-uid-conflict"},
        {"<error xmlns=\"DAV:\"/>", ""},
        {"<html><body>Forbidden</body></html>", ""},
        {"Bad Request", ""},
    };
    for (const auto& [body, condition] : cases)
        EXPECT_EQ(DavXml::errorCondition(body), condition) << body;
}

} // namespace
