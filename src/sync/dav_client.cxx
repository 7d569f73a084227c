// Requests through libcurl: URLs taken apart and put together by curl's URL API, never by hand.
#include "dav_client.h"

#include <arpa/inet.h>
#include <cstring>
#include <memory>

namespace {

constexpr long kConnectSeconds = 15;
constexpr long kRequestSeconds = 120;
// A reply bigger than this is refused: a task collection of ten thousand to-dos with long
// notes stays far below it.
constexpr std::size_t kMaxReply = 512u << 20;

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
    return host == "localhost" || host == "[::1]";
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
    auto* body = static_cast<std::string*>(target);
    std::size_t bytes = size * count;
    if (body->size() + bytes > kMaxReply)
        return 0;
    body->append(data, bytes);
    return bytes;
}

// Only the ETag is read from the headers; libcurl has split them into lines.
std::size_t collectHeader(char* data, std::size_t size, std::size_t count, void* target) {
    std::size_t bytes = size * count;
    std::string line(data, bytes);
    if (line.size() > 5 && strncasecmp(line.c_str(), "etag:", 5) == 0) {
        std::size_t start = line.find_first_not_of(" \t\r\n", 5);
        if (start != std::string::npos)
            static_cast<HttpReply*>(target)->etag =
                line.substr(start, line.find_last_not_of(" \t\r\n") - start + 1);
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

DavClient::DavClient(const std::string& collectionUrl, const Credentials& credentials,
                     const std::string& caFile)
    : curl_(curl_easy_init()), curlError_{}, caFile_(caFile), collectionUrl_(collectionUrl) {
    UrlHandle handle(curl_url(), &curl_url_cleanup);
    curl_url_set(handle.get(), CURLUPART_URL, collectionUrl.c_str(), 0);
    collectionPath_ = decode(urlPart(handle.get(), CURLUPART_PATH));
    if (collectionPath_.empty() || collectionPath_.back() != '/')
        collectionPath_ += '/';
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

std::string DavClient::urlFor(const std::string& path, CURLUPart part) const {
    UrlHandle handle(curl_url(), &curl_url_cleanup);
    curl_url_set(handle.get(), CURLUPART_URL, collectionUrl_.c_str(), 0);
    if (!path.empty())
        curl_url_set(handle.get(), CURLUPART_PATH, path.c_str(), CURLU_URLENCODE);
    return urlPart(handle.get(), part);
}

// libcurl's words, with what to do where a person can do something about it.
std::string DavClient::describe(int result) const {
    std::string what = curlError_[0] != '\0' ? curlError_ : curl_easy_strerror(CURLcode(result));
    if (result == CURLE_PEER_FAILED_VERIFICATION)
        return "the server's certificate is not trusted (" + what +
               "); if the server is your own, give its certificate, or the certificate of the "
               "authority that signed it, with --ca-file FILE or ca_file in the settings";
    if (result == CURLE_SSL_CACERT_BADFILE)
        return "cannot use the CA file " + caFile_ + " (" + what + ")";
    return what;
}

std::string DavClient::hrefFor(const std::string& path) const {
    return urlFor(path, CURLUPART_PATH);
}

std::string DavClient::pathOf(const std::string& href) const {
    UrlHandle handle(curl_url(), &curl_url_cleanup);
    curl_url_set(handle.get(), CURLUPART_URL, collectionUrl_.c_str(), 0);
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
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &reply.body);
    curl_easy_setopt(curl, CURLOPT_HEADERDATA, &reply);
    requests_++;
    if (std::strcmp(method, "PUT") == 0 || std::strcmp(method, "DELETE") == 0)
        writes_++;
    curlError_[0] = '\0';
    CURLcode result = curl_easy_perform(curl);
    curl_slist_free_all(list);
    if (result != CURLE_OK) {
        error = describe(result);
        return false;
    }
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &reply.status);
    return true;
}
