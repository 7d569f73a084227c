// Normal forms through curl's URL API; only the percent-encoding is put in one form here, as
// curl keeps it as written.
#include "collection_url.h"

#include <cctype>
#include <cstdio>
#include <curl/curl.h>
#include <memory>

namespace CollectionUrl {

namespace {

using UrlHandle = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

std::string part(CURLU* url, CURLUPart which, unsigned flags = 0) {
    char* text = nullptr;
    if (curl_url_get(url, which, &text, flags) != CURLUE_OK || text == nullptr)
        return {};
    std::string out = text;
    curl_free(text);
    return out;
}

bool unreserved(unsigned char c) {
    return std::isalnum(c) || c == '-' || c == '.' || c == '_' || c == '~';
}

// Characters a path may hold as they are (RFC 3986 3.3), the reserved ones keeping their
// meaning: those are never decoded, so "%2F" stays apart from "/".
bool plainInPath(unsigned char c) {
    static const std::string kAllowed = "!$&'()*+,;=:@/";
    return unreserved(c) || kAllowed.find(static_cast<char>(c)) != std::string::npos;
}

int hexValue(char c) {
    if (!std::isxdigit(static_cast<unsigned char>(c)))
        return -1;
    return std::isdigit(static_cast<unsigned char>(c)) ? c - '0' : std::tolower(c) - 'a' + 10;
}

std::string encoded(unsigned char c) {
    char text[4];
    std::snprintf(text, sizeof text, "%%%02X", c);
    return text;
}

std::string normalEncoding(const std::string& path) {
    std::string out;
    for (std::size_t i = 0; i < path.size(); i++) {
        auto c = static_cast<unsigned char>(path[i]);
        int high = i + 2 < path.size() ? hexValue(path[i + 1]) : -1;
        int low = high >= 0 ? hexValue(path[i + 2]) : -1;
        if (c == '%' && low >= 0) {
            auto decoded = static_cast<unsigned char>(high * 16 + low);
            out +=
                unreserved(decoded) ? std::string(1, static_cast<char>(decoded)) : encoded(decoded);
            i += 2;
        } else {
            out += plainInPath(c) ? std::string(1, static_cast<char>(c)) : encoded(c);
        }
    }
    return out;
}

std::string normalOf(CURLU* url) {
    std::string scheme = part(url, CURLUPART_SCHEME);
    std::string host = part(url, CURLUPART_HOST);
    if (scheme.empty() || host.empty())
        return {};
    for (char& c : host)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    std::string port = part(url, CURLUPART_PORT, CURLU_NO_DEFAULT_PORT);
    std::string path = normalEncoding(part(url, CURLUPART_PATH));
    if (path.empty() || path.back() != '/')
        path += '/';
    std::string query = part(url, CURLUPART_QUERY);
    return scheme + "://" + host + (port.empty() ? "" : ":" + port) + path +
           (query.empty() ? "" : "?" + query);
}

} // namespace

std::string normal(const std::string& url) {
    UrlHandle handle(curl_url(), &curl_url_cleanup);
    if (curl_url_set(handle.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK)
        return {};
    return normalOf(handle.get());
}

std::string resolve(const std::string& base, const std::string& href) {
    UrlHandle handle(curl_url(), &curl_url_cleanup);
    if (curl_url_set(handle.get(), CURLUPART_URL, base.c_str(), 0) != CURLUE_OK ||
        curl_url_set(handle.get(), CURLUPART_URL, href.c_str(), 0) != CURLUE_OK)
        return {};
    return normalOf(handle.get());
}

} // namespace CollectionUrl
