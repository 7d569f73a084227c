// The requests that read the collection.
#include "remote_scan.h"

namespace {

constexpr std::size_t kMultigetBatch = 200;

const std::vector<std::string> kXmlHeaders = {"Content-Type: application/xml; charset=utf-8",
                                              "Depth: 1"};

// A server without sync-collection refuses the report with one of many statuses (403 with
// DAV:supported-report, 400, 405, 501, ...). Only a refused sign-in or URL is left for the
// person to deal with.
bool refusesReport(long status) {
    return status == 501 || (status >= 400 && status < 500 && status != 401 && status != 404);
}

// A server that has forgotten a token should say so with a 403 or 409 (RFC 6578, 3.2); some
// fail with a 500 instead (Xandikos 0.2). Either way a listing from nothing is tried.
bool refusesToken(long status) {
    return status != 207 && status != 401 && status != 404;
}

} // namespace

std::string describeReply(const HttpReply& reply) {
    std::string condition = DavXml::errorCondition(reply.body);
    std::string code = std::to_string(reply.status) + (condition.empty() ? "" : ", " + condition);
    if (reply.status == 401)
        return "the server refused the user name or password (" + code + ")";
    if (reply.status == 403)
        return "the server forbids this (" + code + ")";
    if (reply.status == 404)
        return "there is no collection at that URL (" + code + ")";
    return "the server answered " + std::to_string(reply.status) +
           (reply.reason.empty() ? "" : " " + reply.reason) +
           (condition.empty() ? "" : " (" + condition + ")");
}

bool RemoteScan::ask(const char* method, const std::string& body, HttpReply& reply,
                     std::string& error) {
    return client_.send(method, "", body, kXmlHeaders, reply, error);
}

bool RemoteScan::read(const HttpReply& reply, const char* what, DavListing& listing,
                      std::string& error) {
    if (reply.status != 207) {
        error = describeReply(reply) + " to " + what;
        return false;
    }
    return DavXml::parseMultistatus(reply.body, listing, error);
}

bool RemoteScan::list(const std::string& token, bool tokenless, std::string& error) {
    if (tokenless)
        return listEtags(error);
    HttpReply reply;
    if (!ask("REPORT", DavXml::syncCollection(token), reply, error))
        return false;
    bool retry = !token.empty() && refusesToken(reply.status);
    complete_ = token.empty() || retry;
    if (retry && !ask("REPORT", DavXml::syncCollection(""), reply, error))
        return false;
    if (refusesReport(reply.status))
        return listEtags(error);
    DavListing listing;
    if (!read(reply, "the sync REPORT", listing, error))
        return false;
    if (listing.syncToken.empty())
        return listEtags(error);
    newToken_ = listing.syncToken;
    for (const DavResource& resource : listing.resources)
        take(resource);
    return true;
}

bool RemoteScan::listEtags(std::string& error) {
    HttpReply reply;
    DavListing listing;
    if (!ask("PROPFIND", DavXml::propfind(), reply, error) ||
        !read(reply, "the PROPFIND listing the collection", listing, error))
        return false;
    complete_ = true;
    tokenless_ = true;
    for (const DavResource& resource : listing.resources)
        take(resource);
    return true;
}

void RemoteScan::take(const DavResource& resource) {
    std::string path = client_.pathOf(resource.href);
    if (path == client_.collectionPath() || path + "/" == client_.collectionPath())
        return;
    if (resource.status == 404) {
        removed_.push_back(path);
        return;
    }
    if (resource.status < 200 || resource.status > 299)
        return;
    ServerTask& task = present_[path];
    task.etag = resource.etag;
    task.ics = resource.calendarData;
    task.readable = resource.hasData && ServerTodo::parse(task.ics, task.todo);
}

// A batch whose reply passes the cap (tasks with attachments, say) is asked again in halves,
// down to one task a request: only a single task larger than the cap is past reading.
bool RemoteScan::fetch(const std::vector<std::string>& paths, std::string& error) {
    std::size_t batch = kMultigetBatch;
    for (std::size_t from = 0; from < paths.size();) {
        std::vector<std::string> hrefs;
        for (std::size_t i = from; i < paths.size() && i < from + batch; i++)
            hrefs.push_back(client_.hrefFor(paths[i]));
        HttpReply reply;
        DavListing listing;
        bool answered = ask("REPORT", DavXml::multiget(hrefs), reply, error);
        if (!answered && reply.cutOff && hrefs.size() > 1) {
            batch = hrefs.size() / 2;
            error.clear();
            continue;
        }
        if (!answered || !read(reply, "the calendar-multiget REPORT", listing, error))
            return false;
        for (const DavResource& resource : listing.resources)
            take(resource);
        from += hrefs.size();
    }
    return true;
}
