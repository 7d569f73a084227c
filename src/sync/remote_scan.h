// What changed on the server since the last sync: one sync-collection REPORT from the saved
// token (from nothing when there is none or the server no longer knows it), then the calendar
// data the report left out, fetched with calendar-multiget in batches. A server that does not
// offer sync-collection (RFC 6578) has its collection listed by a PROPFIND of every member's
// ETag instead, which the sync compares with those it saw last. Reads only.
#ifndef PINDLE_REMOTE_SCAN_H
#define PINDLE_REMOTE_SCAN_H

#include "dav_client.h"
#include "dav_xml.h"
#include "server_todo.h"

#include <map>
#include <string>
#include <vector>

struct ServerTask {
    std::string etag;
    std::string ics; // empty when the server did not give it
    ServerTodo todo;
    bool readable = false; // ics holds a VTODO
};

class RemoteScan {
public:
    explicit RemoteScan(DavClient& client) : client_(client) {}

    // Lists the changes since `token`, or with `tokenless` every member's ETag; a server that
    // refuses sync-collection gets the latter too. False with a reason when the server cannot be
    // reached, refuses the sign-in or gives no readable answer.
    bool list(const std::string& token, bool tokenless, std::string& error);

    // Fetches the calendar data of `paths` that the listing did not carry.
    bool fetch(const std::vector<std::string>& paths, std::string& error);

    // True when the listing holds every task of the collection, not only the changed ones.
    bool complete() const { return complete_; }
    const std::string& newToken() const { return newToken_; }
    // The listing was of ETags, as the server offers no sync-collection: there is no token.
    bool tokenless() const { return tokenless_; }
    // Tasks listed as present (by decoded path), and paths listed as removed.
    std::map<std::string, ServerTask>& present() { return present_; }
    const std::vector<std::string>& removed() const { return removed_; }

private:
    bool ask(const char* method, const std::string& body, HttpReply& reply, std::string& error);
    bool listEtags(std::string& error);
    bool read(const HttpReply& reply, const char* what, DavListing& listing, std::string& error);
    void take(const DavResource& resource);

    DavClient& client_;
    bool complete_ = false;
    bool tokenless_ = false;
    std::string newToken_;
    std::map<std::string, ServerTask> present_;
    std::vector<std::string> removed_;
};

// The sentence for a reply that ended a request: its status, with the status line's words, and
// the precondition a WebDAV error body names (RFC 4918 16), such as valid-calendar-data.
std::string describeReply(const HttpReply& reply);

#endif
