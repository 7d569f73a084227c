// Passwords in the Secret Service: libsecret's simple password calls with a schema of our own,
// matched by its attributes only.
#include "keyring.h"

#include <libsecret/secret.h>

namespace Keyring {

namespace {

// Not matched by name, so that secrets stored by other tools with the same attributes count.
const SecretSchema kSchema = {"org.pindle.PindleSync",
                              SECRET_SCHEMA_DONT_MATCH_NAME,
                              {{"url", SECRET_SCHEMA_ATTRIBUTE_STRING},
                               {"user", SECRET_SCHEMA_ATTRIBUTE_STRING},
                               {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
                              0,
                              nullptr,
                              nullptr,
                              nullptr,
                              nullptr,
                              nullptr,
                              nullptr,
                              nullptr};

std::string failure(GError* error) {
    std::string text = "cannot use the desktop's keyring (" + std::string(error->message) +
                       "); keep the password in a file instead, with --password-file";
    g_error_free(error);
    return text;
}

} // namespace

bool lookup(const std::string& url, const std::string& user, std::string& password,
            std::string& error) {
    GError* gerror = nullptr;
    gchar* secret = secret_password_lookup_sync(&kSchema, nullptr, &gerror, "url", url.c_str(),
                                                "user", user.c_str(), nullptr);
    if (gerror != nullptr) {
        error = failure(gerror);
        return false;
    }
    if (secret == nullptr) {
        error = "the keyring holds no password for " + user + " at " + url +
                ": run pindle_sync --setup";
        return false;
    }
    password = secret;
    secret_password_free(secret);
    return true;
}

bool store(const std::string& url, const std::string& user, const std::string& password,
           std::string& error) {
    GError* gerror = nullptr;
    const std::string label = "Pindle ToDo sync: " + user + " at " + url;
    secret_password_store_sync(&kSchema, SECRET_COLLECTION_DEFAULT, label.c_str(), password.c_str(),
                               nullptr, &gerror, "url", url.c_str(), "user", user.c_str(), nullptr);
    if (gerror != nullptr)
        error = failure(gerror);
    return gerror == nullptr;
}

} // namespace Keyring
