// Discovery by PROPFIND, redirections followed by hand so that each request keeps its method
// and body, and so that the URL the server finally answers for is known.
#include "collection_finder.h"

#include "collection_url.h"
#include "dav_xml.h"
#include "remote_scan.h"

namespace {

constexpr int kMaxRedirections = 5;

bool redirected(long status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

std::string lastSegment(const std::string& url) {
    std::string path = url.substr(0, url.size() - 1);
    return path.substr(path.rfind('/') + 1);
}

CollectionFinder::Place placeOf(const std::string& base, const DavResource& resource) {
    CollectionFinder::Place place;
    place.url = CollectionUrl::resolve(base, resource.href);
    place.isTaskList = resource.holdsTodos;
    place.name = resource.displayName.empty() ? lastSegment(place.url) : resource.displayName;
    if (!resource.principal.empty())
        place.principal = CollectionUrl::resolve(base, resource.principal);
    if (!resource.calendarHome.empty())
        place.home = CollectionUrl::resolve(base, resource.calendarHome);
    return place;
}

} // namespace

// A PROPFIND of `url` and, at depth 1, its members: the URL itself first.
bool CollectionFinder::ask(const std::string& url, const char* depth, std::vector<Place>& places,
                           std::string& error) {
    client_.aimAt(url);
    HttpReply reply;
    for (int hop = 0;; hop++) {
        if (!client_.send(
                "PROPFIND", "", DavXml::propfindLists(),
                {"Content-Type: application/xml; charset=utf-8", std::string("Depth: ") + depth},
                reply, error))
            return false;
        if (!redirected(reply.status) || reply.location.empty() || hop == kMaxRedirections)
            break;
        client_.aimAt(reply.location);
    }
    DavListing listing;
    if (reply.status != 207) {
        error = describeReply(reply) + " to a look at " + client_.url();
        return false;
    }
    if (!DavXml::parseMultistatus(reply.body, listing, error))
        return false;
    // The URL asked about comes first. A server lists it first anyway, and may spell it its own
    // way: that spelling is the one kept.
    std::string self = CollectionUrl::normal(client_.url());
    places.clear();
    for (const DavResource& resource : listing.resources) {
        Place place = placeOf(client_.url(), resource);
        if (resource.status >= 200 && resource.status <= 299)
            places.insert(place.url == self ? places.begin() : places.end(), place);
    }
    if (places.empty())
        error = "the server's answer to a look at " + client_.url() + " describes nothing";
    return !places.empty();
}

bool CollectionFinder::look(const std::string& url, Place& place, std::string& error) {
    std::vector<Place> places;
    if (!ask(url, "0", places, error))
        return false;
    place = places.front();
    client_.aimAt(place.url);
    return true;
}

// The principal names the calendar home; a server may name it from anywhere, the URL given
// included. Without a principal there, RFC 6764 has clients ask /.well-known/caldav, and then
// the server's root.
bool CollectionFinder::findHome(const Place& start, std::string& home, std::string& error) {
    Place place = start;
    for (const char* fallback : {"/.well-known/caldav", "/"}) {
        if (!place.principal.empty() || !place.home.empty())
            break;
        if (!look(CollectionUrl::resolve(start.url, fallback), place, error))
            return false;
    }
    if (place.home.empty() && !place.principal.empty() && !look(place.principal, place, error))
        return false;
    home = place.home;
    if (home.empty())
        error = "the server names no calendars for this user (no calendar-home-set)";
    return !home.empty();
}

bool CollectionFinder::taskLists(const Place& start, std::vector<Place>& lists, std::string& home,
                                 std::string& error) {
    std::vector<Place> places;
    if (!findHome(start, home, error) || !ask(home, "1", places, error))
        return false;
    lists.clear();
    for (std::size_t i = 1; i < places.size(); i++) {
        if (places[i].isTaskList)
            lists.push_back(places[i]);
    }
    return true;
}

bool CollectionFinder::make(const std::string& home, const std::string& name, Place& made,
                            std::string& error) {
    client_.aimAt(CollectionUrl::resolve(home, "pindle-todo/"));
    HttpReply reply;
    if (!client_.send("MKCALENDAR", "", DavXml::mkcalendar(name),
                      {"Content-Type: application/xml; charset=utf-8"}, reply, error))
        return false;
    if (reply.status != 201) {
        error = describeReply(reply) + " to making the task list " + client_.url();
        return false;
    }
    return look(client_.url(), made, error);
}
