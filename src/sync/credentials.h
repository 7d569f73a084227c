// Who signs in to the server: the user name and where the password comes from. The password is
// read here from a private file or the environment and handed only to the HTTP client; with
// neither, libcurl looks it up in ~/.netrc.
#ifndef PINDLE_CREDENTIALS_H
#define PINDLE_CREDENTIALS_H

#include <string>

struct Credentials {
    std::string user;
    std::string password;
    bool fromNetrc = false;

    // The first line of `passwordFile` when one is named, else $PINDLE_SYNC_PASSWORD, else
    // ~/.netrc. A file that its group or others may read or write is refused, as ssh refuses
    // such keys.
    static bool gather(const std::string& user, const std::string& passwordFile, Credentials& out,
                       std::string& error);
};

#endif
