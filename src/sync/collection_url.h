// A collection's URL in one spelling, whichever way a person typed it or a server wrote it
// (RFC 3986 6.2.2): scheme and host in small letters, no default port, dot segments resolved,
// percent-encoding in one form (unreserved characters plain, the rest with capital hex digits)
// and a slash at the end, as a collection's path has. Two URLs of one collection are equal in
// this form; taken apart by curl's URL API, never by hand.
#ifndef PINDLE_COLLECTION_URL_H
#define PINDLE_COLLECTION_URL_H

#include <string>

namespace CollectionUrl {

// `url` in normal form; empty when it is no absolute URL.
std::string normal(const std::string& url);

// A server's `href` (an absolute URL, or a path or relative reference on `base`'s server) as an
// absolute URL in normal form.
std::string resolve(const std::string& base, const std::string& href);

} // namespace CollectionUrl

#endif
