// The connection to the CalDAV server: one libcurl handle, kept alive across requests, that
// signs in, checks certificates (the system's, and a CA file of the user's own), and sends WebDAV
// requests for paths on the server of the URL it is aimed at. It reads at most kMaxReply bytes
// of any reply, so that a server that never stops sending costs a bounded amount of memory. It
// counts what it sends, so that a sync with nothing new can show it cost one request.
#ifndef PINDLE_DAV_CLIENT_H
#define PINDLE_DAV_CLIENT_H

#include "credentials.h"

#include <curl/curl.h>
#include <string>
#include <vector>

struct HttpReply {
    long status = 0;
    std::string reason; // the status line's words, e.g. "Bad Request"; none over HTTP/2
    std::string etag;
    std::string location; // where a redirection points, as an absolute URL
    std::string body;
    bool cutOff = false; // no reply: it was larger than DavClient::kMaxReply
    // No reply: the server, once reached, broke the connection during the exchange (libcurl's
    // words), as a server does that refuses a body by closing before it has read it.
    std::string brokenOff;
};

class DavClient {
public:
    // Enough for the ETags of a few hundred thousand tasks, which is what a listing holds, and
    // for a batch of tasks with long notes.
    static constexpr std::size_t kMaxReply = 32u << 20;

    // Refuses (false, with a reason) a URL that is not http or https, carries a user name or
    // password, or is plain http to a host other than a loopback address without `allowHttp`.
    static bool checkUrl(const std::string& url, bool allowHttp, std::string& error);

    // `caFile`, when given, holds certificates to trust besides the system's (a server of one's
    // own with a self-signed certificate, or a private CA).
    DavClient(const std::string& url, const Credentials& credentials, const std::string& caFile);
    ~DavClient();
    DavClient(const DavClient&) = delete;
    DavClient& operator=(const DavClient&) = delete;

    // Aims the requests that follow at another URL (a redirection's, the collection found).
    void aimAt(const std::string& url);
    const std::string& url() const { return url_; }

    // Sends `method` to `path` (a decoded path on the server; empty for the URL aimed at). False
    // when no whole HTTP reply came, with a sentence saying why in `error` (the server could
    // not be reached, or its reply was larger than kMaxReply); any status is a reply.
    bool send(const char* method, const std::string& path, const std::string& body,
              const std::vector<std::string>& headers, HttpReply& reply, std::string& error);

    // The path of the URL aimed at, decoded, ending in "/".
    const std::string& collectionPath() const { return collectionPath_; }
    // A server's href (absolute URL or path, percent-encoded) as a decoded path, and back.
    std::string pathOf(const std::string& href) const;
    std::string hrefFor(const std::string& path) const;

    int requests() const { return requests_; }
    int writes() const { return writes_; }

private:
    std::string urlFor(const std::string& path, CURLUPart part) const;
    std::string describe(int result, bool tooLarge) const;
    std::string curlWords(int result) const;

    void* curl_;
    char curlError_[CURL_ERROR_SIZE];
    std::string caFile_;
    std::string url_;
    std::string collectionPath_;
    int requests_ = 0;
    int writes_ = 0;
};

#endif
