// The WebDAV side of the conversation, in XML through pugixml: the bodies of the requests that read
// the collection (the REPORTs of RFC 6578 sync-collection and RFC 4791 calendar-multiget, and a
// PROPFIND of the ETags) and the multistatus replies, read by namespace and local name whatever
// prefixes the server chose.
#ifndef PINDLE_DAV_XML_H
#define PINDLE_DAV_XML_H

#include <string>
#include <vector>

struct DavResource {
    std::string href;
    long status = 0; // the response's status, or its successful propstat's
    std::string etag;
    std::string calendarData;
    bool hasData = false;
};

struct DavListing {
    std::string syncToken;
    std::vector<DavResource> resources;
};

namespace DavXml {

// Asks for every change since `token` (everything when it is empty), with each member's ETag and
// calendar data.
std::string syncCollection(const std::string& token);

// Asks for the ETag and calendar data of each of `hrefs` (percent-encoded paths).
std::string multiget(const std::vector<std::string>& hrefs);

// Asks for each member's ETag: the listing of a server without sync-collection.
std::string propfind();

// Reads a 207 Multi-Status body. False, with a reason, when it is not well-formed XML or not a
// multistatus; responses without an href are skipped.
bool parseMultistatus(const std::string& body, DavListing& out, std::string& error);

} // namespace DavXml

#endif
