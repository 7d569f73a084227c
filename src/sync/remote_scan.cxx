// The REPORTs that read the collection.
#include "remote_scan.h"

namespace {

constexpr std::size_t kMultigetBatch = 200;

const std::vector<std::string> kXmlHeaders = {"Content-Type: application/xml; charset=utf-8",
                                              "Depth: 1"};

} // namespace

std::string describeStatus(long status) {
    if (status == 401)
        return "the server refused the user name or password (401)";
    if (status == 403)
        return "the server forbids this (403)";
    if (status == 404)
        return "there is no collection at that URL (404)";
    return "the server answered " + std::to_string(status);
}

bool RemoteScan::report(const std::string& token, HttpReply& reply, std::string& error) {
    if (!client_.send("REPORT", "", DavXml::syncCollection(token), kXmlHeaders, reply, error)) {
        error = "cannot reach the server: " + error;
        return false;
    }
    return true;
}

bool RemoteScan::list(const std::string& token, std::string& error) {
    HttpReply reply;
    if (!report(token, reply, error))
        return false;
    complete_ = token.empty();
    // A server that has forgotten the token says so with a 403 or 409 (RFC 6578, 3.2); any
    // refusal other than of the sign-in or the URL gets a full listing instead.
    bool tokenRefused =
        reply.status >= 400 && reply.status < 500 && reply.status != 401 && reply.status != 404;
    if (!token.empty() && tokenRefused) {
        complete_ = true;
        if (!report("", reply, error))
            return false;
    }
    if (reply.status != 207) {
        error = describeStatus(reply.status) + " to the sync REPORT";
        return false;
    }
    DavListing listing;
    if (!DavXml::parseMultistatus(reply.body, listing, error))
        return false;
    if (listing.syncToken.empty()) {
        error = "the server gave no sync token: it does not support sync-collection (RFC 6578)";
        return false;
    }
    newToken_ = listing.syncToken;
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

bool RemoteScan::fetch(const std::vector<std::string>& paths, std::string& error) {
    for (std::size_t from = 0; from < paths.size(); from += kMultigetBatch) {
        std::vector<std::string> hrefs;
        for (std::size_t i = from; i < paths.size() && i < from + kMultigetBatch; i++)
            hrefs.push_back(client_.hrefFor(paths[i]));
        HttpReply reply;
        if (!client_.send("REPORT", "", DavXml::multiget(hrefs), kXmlHeaders, reply, error)) {
            error = "cannot reach the server: " + error;
            return false;
        }
        DavListing listing;
        if (reply.status != 207) {
            error = describeStatus(reply.status) + " to the calendar-multiget REPORT";
            return false;
        }
        if (!DavXml::parseMultistatus(reply.body, listing, error))
            return false;
        for (const DavResource& resource : listing.resources)
            take(resource);
    }
    return true;
}
