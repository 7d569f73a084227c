// The desktop's keyring, the Secret Service that GNOME Keyring and KWallet provide, through
// libsecret: the password of one user at one collection, kept as a secret with the attributes
// "url" and "user", so that `secret-tool lookup url URL user NAME` finds it too, and a password
// stored that way with secret-tool is found here.
#ifndef PINDLE_KEYRING_H
#define PINDLE_KEYRING_H

#include <string>

namespace Keyring {

// False, with a reason saying what to do, when there is no such password or no keyring.
bool lookup(const std::string& url, const std::string& user, std::string& password,
            std::string& error);

// Keeps the password in the default collection (the login keyring), replacing any it had.
bool store(const std::string& url, const std::string& user, const std::string& password,
           std::string& error);

} // namespace Keyring

#endif
