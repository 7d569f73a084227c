// Who signs in to the server: the user name and the password, read here from where the settings
// say (the desktop's keyring, a private file, the environment) and handed only to the HTTP
// client; for ~/.netrc, libcurl looks it up itself.
#ifndef PINDLE_CREDENTIALS_H
#define PINDLE_CREDENTIALS_H

#include <string>

struct Credentials {
    std::string user;
    std::string password;
    bool fromNetrc = false;

    // From `source`: "keyring" (the password of `user` at `url`), "environment"
    // ($PINDLE_SYNC_PASSWORD), "netrc", or "file:PATH" (its first line; a file that its group or
    // others may read or write is refused, as ssh refuses such keys). An empty source is the
    // environment when the variable is set, else ~/.netrc.
    static bool gather(const std::string& url, const std::string& user, const std::string& source,
                       Credentials& out, std::string& error);
};

#endif
