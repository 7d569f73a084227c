// Setting up: the password read from the terminal without echo, the task list found (which
// proves the URL and the password), then the keyring and the settings file.
#include "sync_setup.h"

#include "collection_finder.h"
#include "collection_url.h"
#include "credentials.h"
#include "dav_client.h"
#include "keyring.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <termios.h>
#include <unistd.h>

namespace SyncSetup {

namespace {

// One line from the terminal, with echo off for a password; false when there is no terminal
// to ask on.
bool askTerminal(const std::string& prompt, bool echo, std::string& line) {
    int tty = open("/dev/tty", O_RDWR | O_CLOEXEC);
    if (tty < 0)
        return false;
    // Echo goes off before the prompt shows: a person who types as soon as they see it must
    // neither see the password echoed nor lose it to the flush of what was typed before.
    termios saved{};
    bool quiet = !echo && tcgetattr(tty, &saved) == 0;
    if (quiet) {
        termios noEcho = saved;
        noEcho.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(tty, TCSAFLUSH, &noEcho);
    }
    (void)!write(tty, prompt.data(), prompt.size());
    char c;
    while (read(tty, &c, 1) == 1 && c != '\n')
        line += c;
    if (quiet) {
        tcsetattr(tty, TCSANOW, &saved);
        (void)!write(tty, "\n", 1);
    }
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
    else if (!askTerminal("Password for " + settings.user + " at " + settings.url + ": ", false,
                          credentials.password))
        error = "there is no terminal to ask for the password on: give it in PINDLE_SYNC_PASSWORD "
                "or with --password-file FILE";
    return error.empty();
}

std::string listing(const std::vector<CollectionFinder::Place>& lists) {
    std::string out;
    for (std::size_t i = 0; i < lists.size(); i++)
        out += "\n  " + std::to_string(i + 1) + ". " + lists[i].name + "  " + lists[i].url;
    return out;
}

// One of several lists: the one named, else the person's choice on the terminal.
bool choose(const std::vector<CollectionFinder::Place>& lists, const std::string& named,
            const std::string& base, CollectionFinder::Place& chosen, std::string& error) {
    for (const CollectionFinder::Place& list : lists) {
        if (!named.empty() &&
            (list.name == named || list.url == CollectionUrl::resolve(base, named))) {
            chosen = list;
            return true;
        }
    }
    std::string answer;
    if (named.empty() && askTerminal("The server has " + std::to_string(lists.size()) +
                                         " task lists:" + listing(lists) +
                                         "\nWhich one shall Pindle ToDo sync with (1-" +
                                         std::to_string(lists.size()) + ")? ",
                                     true, answer)) {
        char* end = nullptr;
        unsigned long number = std::strtoul(answer.c_str(), &end, 10);
        if (end != answer.c_str() && *end == '\0' && number >= 1 && number <= lists.size()) {
            chosen = lists[number - 1];
            return true;
        }
        error = "no task list numbered \"" + answer + "\"";
        return false;
    }
    error = (named.empty() ? "the server has several task lists"
                           : "the server has no task list \"" + named + "\"") +
            "; name one with --task-list NAME or --task-list URL:" + listing(lists);
    return false;
}

// The task list the URL names, or the person's found from it on the server.
bool findList(const SyncSettings& settings, const Credentials& credentials,
              const std::string& named, CollectionFinder::Place& chosen, std::string& error) {
    DavClient client(settings.url, credentials, settings.caFile);
    CollectionFinder finder(client);
    if (!finder.look(settings.url, chosen, error))
        return false;
    if (chosen.isTaskList)
        return true;
    std::vector<CollectionFinder::Place> lists;
    std::string home;
    if (!finder.taskLists(chosen, lists, home, error))
        return false;
    if (lists.empty() && named.empty())
        return finder.make(home, kNewListName, chosen, error);
    if (lists.size() == 1 && named.empty()) {
        chosen = lists.front();
        return true;
    }
    return choose(lists, named, settings.url, chosen, error);
}

} // namespace

bool run(SyncSettings settings, const std::string& taskList, std::string& error) {
    Credentials credentials;
    CollectionFinder::Place list;
    if (!takePassword(settings, credentials, error) ||
        !findList(settings, credentials, taskList, list, error))
        return false;
    settings.url = list.url;
    if (settings.password == "keyring" &&
        !Keyring::store(settings.url, settings.user, credentials.password, error))
        return false;
    settings.folder = std::filesystem::absolute(settings.folder).lexically_normal().string();
    if (!settings.caFile.empty())
        settings.caFile = std::filesystem::absolute(settings.caFile).string();
    const std::string path = SyncSettings::filePath();
    if (!SyncSettings::makePrivateFolder(settings.folder, error) || !settings.write(path, error))
        return false;
    std::printf("pindle_sync: set up for %s with the task list \"%s\" at %s, syncing %s; the "
                "settings are in %s.\nSync now with pindle_sync, or let it sync by itself: "
                "systemctl --user enable --now pindle-sync.timer pindle-sync.path\n",
                settings.user.c_str(), list.name.c_str(), settings.url.c_str(),
                settings.folder.c_str(), path.c_str());
    return true;
}

} // namespace SyncSetup
