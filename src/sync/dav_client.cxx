// Requests through libcurl: URLs taken apart and put together by curl's URL API, never by hand.
#include "dav_client.h"

#include <arpa/inet.h>
#include <cstring>
#include <memory>

namespace {

constexpr long kConnectSeconds = 15;
constexpr long kRequestSeconds = 120;
constexpr std::size_t kFirstReserve = 64u << 10;
static_assert((DavClient::kMaxReply & (DavClient::kMaxReply - 1)) == 0 &&
                  DavClient::kMaxReply % kFirstReserve == 0,
              "the reply grows through powers of two to the cap");

// The body as it comes, until it would pass the cap: then the transfer ends there.
struct Reading {
    HttpReply* reply;
    bool tooLarge = false;
};

using UrlHandle = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

std::string urlPart(CURLU* url, CURLUPart part) {
    char* text = nullptr;
    if (curl_url_get(url, part, &text, 0) != CURLUE_OK || text == nullptr)
        return {};
    std::string out = text;
    curl_free(text);
    return out;
}

// 127.0.0.0/8 written as an address: a name that merely starts with "127." can point anywhere.
bool isLoopback(const std::string& host) {
    in_addr address{};
    if (inet_pton(AF_INET, host.c_str(), &address) == 1)
        return (ntohl(address.s_addr) >> 24) == 127;
    return strcasecmp(host.c_str(), "localhost") == 0 || host == "[::1]";
}

std::string decode(const std::string& text) {
    int length = 0;
    char* plain = curl_easy_unescape(nullptr, text.c_str(), static_cast<int>(text.size()), &length);
    if (plain == nullptr)
        return text;
    std::string out(plain, static_cast<std::size_t>(length));
    curl_free(plain);
    return out;
}

std::size_t collectBody(char* data, std::size_t size, std::size_t count, void* target) {
    auto* reading = static_cast<Reading*>(target);
    std::string& body = reading->reply->body;
    std::size_t bytes = size * count;
    if (body.size() + bytes > DavClient::kMaxReply) {
        reading->tooLarge = true;
        return 0;
    }
    // Grown through powers of two, which end exactly at the cap (itself one): a reply near the
    // cap costs the cap and half of it while it grows. Doubling the string's own first capacity
    // would pass just under the cap and then cost nearly twice it.
    if (body.size() + bytes > body.capacity()) {
        std::size_t wanted = kFirstReserve;
        while (wanted < body.size() + bytes)
            wanted *= 2;
        body.reserve(wanted);
    }
    body.append(data, bytes);
    return bytes;
}

std::string trimmed(const std::string& text, std::size_t from) {
    std::size_t start = text.find_first_not_of(" \t\r\n", from);
    if (start == std::string::npos)
        return {};
    return text.substr(start, text.find_last_not_of(" \t\r\n") - start + 1);
}

// The status line's words and the ETag; libcurl has split the headers into lines, and gives
// those of every reply of the exchange (a 401 before the signed-in request's), each starting
// with its status line.
std::size_t collectHeader(char* data, std::size_t size, std::size_t count, void* target) {
    std::size_t bytes = size * count;
    std::string line(data, bytes);
    HttpReply& reply = *static_cast<Reading*>(target)->reply;
    if (line.rfind("HTTP/", 0) == 0) {
        std::size_t code = line.find(' ');
        std::size_t words = code == std::string::npos ? code : line.find(' ', code + 1);
        reply.reason = words == std::string::npos ? "" : trimmed(line, words);
        reply.etag.clear();
    } else if (line.size() > 5 && strncasecmp(line.c_str(), "etag:", 5) == 0) {
        reply.etag = trimmed(line, 5);
    }
    return bytes;
}

} // namespace

bool DavClient::checkUrl(const std::string& url, bool allowHttp, std::string& error) {
    UrlHandle handle(curl_url(), &curl_url_cleanup);
    if (curl_url_set(handle.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK) {
        error = "not a URL: " + url;
        return false;
    }
    std::string scheme = urlPart(handle.get(), CURLUPART_SCHEME);
    if (scheme != "https" && scheme != "http")
        error = "the URL must start with https:// (or http:// for this machine)";
    else if (!urlPart(handle.get(), CURLUPART_USER).empty() ||
             !urlPart(handle.get(), CURLUPART_PASSWORD).empty())
        error = "put no user name or password in the URL: use --user and a password file";
    else if (scheme == "http" && !allowHttp && !isLoopback(urlPart(handle.get(), CURLUPART_HOST)))
        error = "plain http sends the password unencrypted: use https, or --allow-http";
    return error.empty();
}

DavClient::DavClient(const std::string& url, const Credentials& credentials,
                     const std::string& caFile)
    : curl_(curl_easy_init()), curlError_{}, caFile_(caFile) {
    aimAt(url);
    CURL* curl = static_cast<CURL*>(curl_);
    curl_easy_setopt(curl, CURLOPT_USERNAME, credentials.user.c_str());
    if (credentials.fromNetrc)
        curl_easy_setopt(curl, CURLOPT_NETRC, static_cast<long>(CURL_NETRC_OPTIONAL));
    else
        curl_easy_setopt(curl, CURLOPT_PASSWORD, credentials.password.c_str());
    curl_easy_setopt(curl, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC | CURLAUTH_DIGEST));
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, kRequestSeconds);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_USERAGENT, "pindle_sync/1.5");
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, collectBody);
    curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, collectHeader);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, curlError_);
    // The system's certificate folder stays trusted beside the file.
    if (!caFile.empty())
        curl_easy_setopt(curl, CURLOPT_CAINFO, caFile.c_str());
}

DavClient::~DavClient() {
    curl_easy_cleanup(static_cast<CURL*>(curl_));
}

void DavClient::aimAt(const std::string& url) {
    url_ = url;
    UrlHandle handle(curl_url(), &curl_url_cleanup);
    curl_url_set(handle.get(), CURLUPART_URL, url.c_str(), 0);
    collectionPath_ = decode(urlPart(handle.get(), CURLUPART_PATH));
    if (collectionPath_.empty() || collectionPath_.back() != '/')
        collectionPath_ += '/';
}

std::string DavClient::urlFor(const std::string& path, CURLUPart part) const {
    UrlHandle handle(curl_url(), &curl_url_cleanup);
    curl_url_set(handle.get(), CURLUPART_URL, url_.c_str(), 0);
    if (!path.empty())
        curl_url_set(handle.get(), CURLUPART_PATH, path.c_str(), CURLU_URLENCODE);
    return urlPart(handle.get(), part);
}

// libcurl's words, with what to do where a person can do something about it.
std::string DavClient::describe(int result, bool tooLarge) const {
    if (tooLarge)
        return "the server's reply was larger than " + std::to_string(kMaxReply >> 20) +
               " MiB, far more than a task list needs; the sync stopped reading it";
    std::string what = curlWords(result);
    if (result == CURLE_PEER_FAILED_VERIFICATION)
        what = "the server's certificate is not trusted (" + what +
               "); if the server is your own, give its certificate, or the certificate of the "
               "authority that signed it, with --ca-file FILE or ca_file in the settings";
    else if (result == CURLE_SSL_CACERT_BADFILE)
        what = "cannot use the CA file " + caFile_ + " (" + what + ")";
    return "cannot reach the server: " + what;
}

std::string DavClient::curlWords(int result) const {
    return curlError_[0] != '\0' ? curlError_ : curl_easy_strerror(CURLcode(result));
}

std::string DavClient::hrefFor(const std::string& path) const {
    return urlFor(path, CURLUPART_PATH);
}

std::string DavClient::pathOf(const std::string& href) const {
    UrlHandle handle(curl_url(), &curl_url_cleanup);
    curl_url_set(handle.get(), CURLUPART_URL, url_.c_str(), 0);
    if (curl_url_set(handle.get(), CURLUPART_URL, href.c_str(), 0) != CURLUE_OK)
        return decode(href);
    return decode(urlPart(handle.get(), CURLUPART_PATH));
}

bool DavClient::send(const char* method, const std::string& path, const std::string& body,
                     const std::vector<std::string>& headers, HttpReply& reply,
                     std::string& error) {
    CURL* curl = static_cast<CURL*>(curl_);
    reply = HttpReply();
    struct curl_slist* list = nullptr;
    for (const std::string& header : headers)
        list = curl_slist_append(list, header.c_str());
    std::string url = urlFor(path, CURLUPART_URL);
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, method);
    curl_easy_setopt(curl, CURLOPT_NOBODY, std::strcmp(method, "HEAD") == 0 ? 1L : 0L);
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.empty() ? nullptr : body.c_str());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
    curl_easy_setopt(curl, CURLOPT_POST, body.empty() ? 0L : 1L);
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, list);
    Reading reading{&reply};
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &reading);
    curl_easy_setopt(curl, CURLOPT_HEADERDATA, &reading);
    requests_++;
    if (std::strcmp(method, "PUT") == 0 || std::strcmp(method, "DELETE") == 0)
        writes_++;
    curlError_[0] = '\0';
    CURLcode result = curl_easy_perform(curl);
    curl_slist_free_all(list);
    if (result != CURLE_OK) {
        error = describe(result, reading.tooLarge);
        // What was read of an endless reply is let go at once, not kept to the caller's end.
        std::string().swap(reply.body);
        reply.cutOff = reading.tooLarge;
        if (result == CURLE_SEND_ERROR || result == CURLE_RECV_ERROR)
            reply.brokenOff = curlWords(result);
        return false;
    }
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &reply.status);
    char* location = nullptr;
    if (curl_easy_getinfo(curl, CURLINFO_REDIRECT_URL, &location) == CURLE_OK && location)
        reply.location = location;
    return true;
}
