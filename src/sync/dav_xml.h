// The WebDAV side of the conversation, in XML through pugixml: the bodies of the requests that read
// the collection (the REPORTs of RFC 6578 sync-collection and RFC 4791 calendar-multiget, and a
// PROPFIND of the ETags), of those that find a person's task lists (RFC 6764 and RFC 4791) or
// make one (MKCALENDAR), and the multistatus replies, read by namespace and local name whatever
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
    // What finding a person's task lists reads.
    bool isCalendar = false;
    bool holdsTodos = false; // a calendar that takes VTODOs: listed, or no list (it takes all)
    std::string displayName;
    std::string principal;    // the href of current-user-principal
    std::string calendarHome; // the first href of calendar-home-set
};

struct DavListing {
    std::string syncToken;
    std::vector<DavResource> resources;
};

namespace DavXml {

// Asks for every change since `token` (everything when it is empty), with each member's ETag
// alone: the calendar data is fetched in batches, so that no reply needs to hold a whole list.
std::string syncCollection(const std::string& token);

// Asks for the ETag and calendar data of each of `hrefs` (percent-encoded paths).
std::string multiget(const std::vector<std::string>& hrefs);

// Asks for each member's ETag: the listing of a server without sync-collection.
std::string propfind();

// Asks what tells a task list, a principal and a calendar home apart: the resource type, the
// display name, the components a calendar takes, current-user-principal and calendar-home-set.
std::string propfindLists();

// Makes a calendar for VTODOs alone, named `displayName`.
std::string mkcalendar(const std::string& displayName);

// The name of the precondition or postcondition a WebDAV error body says was broken (the first
// element inside DAV:error, e.g. "valid-calendar-data"); empty for any other body.
std::string errorCondition(const std::string& body);

// Reads a 207 Multi-Status body. False, with a reason, when it is not well-formed XML or not a
// multistatus; responses without an href are skipped.
bool parseMultistatus(const std::string& body, DavListing& out, std::string& error);

} // namespace DavXml

#endif
