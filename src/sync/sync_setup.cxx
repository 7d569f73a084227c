// Setting up: the password read from the terminal without echo, one PROPFIND to prove the URL
// and the password, then the keyring and the settings file.
#include "sync_setup.h"

#include "credentials.h"
#include "dav_client.h"
#include "keyring.h"
#include "remote_scan.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <termios.h>
#include <unistd.h>

namespace SyncSetup {

namespace {

// One line from the terminal with echo off; false when there is no terminal to ask on.
bool askPassword(const SyncSettings& settings, std::string& password) {
    int tty = open("/dev/tty", O_RDWR | O_CLOEXEC);
    if (tty < 0)
        return false;
    // Echo goes off before the prompt shows: a person who types as soon as they see it must
    // neither see the password echoed nor lose it to the flush of what was typed before.
    termios saved{};
    bool quiet = tcgetattr(tty, &saved) == 0;
    if (quiet) {
        termios noEcho = saved;
        noEcho.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(tty, TCSAFLUSH, &noEcho);
    }
    const std::string prompt = "Password for " + settings.user + " at " + settings.url + ": ";
    (void)!write(tty, prompt.data(), prompt.size());
    char c;
    while (read(tty, &c, 1) == 1 && c != '\n')
        password += c;
    if (quiet)
        tcsetattr(tty, TCSANOW, &saved);
    (void)!write(tty, "\n", 1);
    close(tty);
    return true;
}

// The password to check and keep, and where the settings will say it comes from.
bool takePassword(SyncSettings& settings, Credentials& credentials, std::string& error) {
    if (settings.password.rfind("file:", 0) == 0) {
        settings.password =
            "file:" + std::filesystem::absolute(settings.password.substr(5)).string();
        return Credentials::gather(settings.url, settings.user, settings.password, credentials,
                                   error);
    }
    credentials.user = settings.user;
    settings.password = "keyring";
    if (const char* fromEnv = std::getenv("PINDLE_SYNC_PASSWORD"))
        credentials.password = fromEnv;
    else if (!askPassword(settings, credentials.password))
        error = "there is no terminal to ask for the password on: give it in PINDLE_SYNC_PASSWORD "
                "or with --password-file FILE";
    return error.empty();
}

// An empty PROPFIND of the collection alone: a server that answers it knows the user, the
// password and the collection.
bool checkServer(const SyncSettings& settings, const Credentials& credentials, std::string& error) {
    DavClient client(settings.url, credentials, settings.caFile);
    HttpReply reply;
    if (!client.send("PROPFIND", "", "", {"Depth: 0"}, reply, error)) {
        error = "cannot reach the server: " + error;
        return false;
    }
    if (reply.status != 207)
        error = describeStatus(reply.status) + " to a look at the collection";
    return error.empty();
}

} // namespace

bool run(SyncSettings settings, std::string& error) {
    Credentials credentials;
    if (!takePassword(settings, credentials, error) || !checkServer(settings, credentials, error))
        return false;
    if (settings.password == "keyring" &&
        !Keyring::store(settings.url, settings.user, credentials.password, error))
        return false;
    settings.folder = std::filesystem::absolute(settings.folder).lexically_normal().string();
    if (!settings.caFile.empty())
        settings.caFile = std::filesystem::absolute(settings.caFile).string();
    const std::string path = SyncSettings::filePath();
    if (!SyncSettings::makePrivateFolder(settings.folder, error) || !settings.write(path, error))
        return false;
    std::printf("pindle_sync: set up for %s at %s, syncing %s; the settings are in %s.\n"
                "Sync now with pindle_sync, or let it sync by itself: "
                "systemctl --user enable --now pindle-sync.timer pindle-sync.path\n",
                settings.user.c_str(), settings.url.c_str(), settings.folder.c_str(), path.c_str());
    return true;
}

} // namespace SyncSetup
