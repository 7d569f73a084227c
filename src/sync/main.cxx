// pindle_sync's entry: checks the command line, the password and the folder, claims the folder
// for this sync, and runs it (a second time when a task changed on the server while the first
// ran): the server is read with the folder unlocked, the files are read, merged and written
// under its lock, and the local changes go up with the folder unlocked again. Then it says what
// happened.
#include "collection_check.h"
#include "credentials.h"
#include "data_folder.h"
#include "data_report.h"
#include "dav_client.h"
#include "folder_claim.h"
#include "progress.h"
#include "sync_options.h"
#include "sync_session.h"
#include "sync_settings.h"
#include "sync_setup.h"
#include "sync_state.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <curl/curl.h>
#include <filesystem>
#include <iostream>
#include <unistd.h>

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr int kBusy = 3;
constexpr int kPasses = 2;

int fail(int status, const std::string& message) {
    std::cerr << "pindle_sync: " << message << '\n';
    return status;
}

// A store that cannot open its file says so; for a sync a missing file is a first start, and
// one that is there but unreadable is refused before the store reads it.
void reportFailuresOnly(DataReport::Kind kind, const char* line) {
    if (kind != DataReport::Kind::Unreadable)
        DataReport::toStderr(kind, line);
}

// A data file that is there but cannot be read would load as an empty list, and the sync would
// take every to-do for deleted: that is refused.
bool checkFile(const char* name, std::string& error) {
    if (access(name, F_OK) == 0 && access(name, R_OK | W_OK) != 0)
        error = std::string("cannot read and write ") + name + ": " + std::strerror(errno);
    return error.empty();
}

bool checkFiles(const SyncState& state, std::string& error) {
    if (!checkFile("pindle_todo.db", error) || !checkFile("cat.db", error))
        return false;
    if (access("pindle_todo.db", F_OK) != 0 && !state.entries.empty())
        error = "pindle_todo.db is missing although to-dos were synced from it";
    return error.empty();
}

// The folder's stores, freed with it: the program's own never are, as they live until it
// ends, but a sync's are checked for leaks.
template <class Store> struct OwnedStore : Store {
    ~OwnedStore() { this->clear(); }
};

struct Folder {
    OwnedStore<TodoStore> todos;
    OwnedStore<CategoryStore> categories;
    DataFolder files{todos, categories};
    SyncState state;
};

void report(const SyncSession::Tally& t, int requests, int writes) {
    std::printf("pindle_sync: sent %d new, %d changed, %d deleted; received %d new, %d changed, "
                "%d deleted; %d merged, %d kept twice; %d requests, %d writes\n",
                t.sentNew, t.sentChanged, t.sentDeleted, t.gotNew, t.gotChanged, t.gotDeleted,
                t.merged, t.conflicts, requests, writes);
}

void add(SyncSession::Tally& total, const SyncSession::Tally& t) {
    total.sentNew += t.sentNew;
    total.sentChanged += t.sentChanged;
    total.sentDeleted += t.sentDeleted;
    total.gotNew += t.gotNew;
    total.gotChanged += t.gotChanged;
    total.gotDeleted += t.gotDeleted;
    total.merged += t.merged;
    total.conflicts += t.conflicts;
    // Only the last pass says what is left: it tries again whatever the first left.
    total.unsent = t.unsent;
    total.raced = t.raced;
}

// Reads the files again if they changed since the last look, takes the server's changes into
// them and saves them with a state that matches, all under the folder's lock.
bool merge(SyncSession& session, Folder& folder, bool dryRun, std::string& error) {
    DataFolder::Change change(folder.files);
    if (!checkFiles(folder.state, error))
        return false;
    session.settle();
    if (dryRun)
        return true;
    if (session.categoriesChanged())
        folder.categories.save();
    if (session.localChanged())
        folder.todos.save();
    // The files first: a crash between the two leaves a state older than the files, which the
    // next sync matches again by content, never a state that names what the files lack.
    change.commit();
    return folder.state.save(error);
}

int syncFolder(bool dryRun, DavClient& client, Folder& folder) {
    Progress progress;
    SyncSession::Tally total;
    std::string failure;
    std::vector<std::string> refusals;
    for (int pass = 0; pass < kPasses; pass++) {
        SyncSession session(client, folder.todos, folder.categories, folder.state, progress,
                            dryRun);
        std::string error;
        if (!session.scan(error) || !merge(session, folder, dryRun, error))
            return fail(kFailed, error);
        session.send();
        for (const std::string& line : session.plan())
            std::printf("%s\n", line.c_str());
        add(total, session.tally());
        failure = session.firstFailure();
        refusals = session.refusals();
        if (!dryRun && !folder.state.save(error))
            return fail(kFailed, error);
        if (total.raced == 0 || dryRun)
            break;
    }
    if (dryRun)
        return 0;
    report(total, client.requests(), client.writes());
    for (const std::string& refusal : refusals)
        std::cerr << "pindle_sync: not sent: " << refusal << '\n';
    if (total.raced > 0)
        return fail(kFailed, "a task kept changing on the server during the sync; run it again");
    std::string unsent = std::to_string(total.unsent) +
                         (total.unsent == 1 ? " change not sent" : " changes not sent");
    if (!failure.empty())
        return fail(kFailed, unsent + " (" + failure + "); run the sync again");
    if (total.unsent > 0)
        return fail(kFailed, unsent + (total.unsent == 1 ? ", as the server refused it; the next "
                                                           "sync tries it again"
                                                         : ", as the server refused them; the "
                                                           "next sync tries them again"));
    return 0;
}

int syncIn(SyncSettings settings, const SyncOptions& options, const Credentials& credentials) {
    std::string error;
    // Named from where the sync was started, read after it entered the folder.
    if (!settings.caFile.empty())
        settings.caFile = std::filesystem::absolute(settings.caFile);
    // The launcher's folder is made on first use, as the launcher makes it.
    if (settings.folder == SyncSettings::dataFolder() &&
        !SyncSettings::makePrivateFolder(settings.folder, error))
        return fail(kFailed, error);
    if (chdir(settings.folder.c_str()) != 0)
        return fail(kFailed,
                    "cannot enter folder " + settings.folder + ": " + std::strerror(errno));
    FolderClaim claim(".", FolderClaim::Role::Sync);
    if (claim.state() == FolderClaim::State::Busy)
        return fail(kBusy, "another pindle_sync is already syncing " + settings.folder +
                               "; let it finish, then run this one again");
    if (claim.state() != FolderClaim::State::Held)
        return fail(kFailed, "cannot lock folder " + settings.folder);
    if (!checkFile("pindle_todo.db", error) || !checkFile("cat.db", error))
        return fail(kFailed, error);
    Folder folder;
    if (!folder.state.load(error))
        return fail(kFailed, error);
    DavClient client(settings.url, credentials, settings.caFile);
    switch (CollectionCheck::aim(settings.url, settings.user, options.startOver, folder.state,
                                 client, error)) {
    case CollectionCheck::Verdict::Failed:
        return fail(kFailed, error);
    case CollectionCheck::Verdict::Refused:
        return fail(kUsage, error);
    case CollectionCheck::Verdict::Same:
        break;
    }
    return syncFolder(options.dryRun, client, folder);
}

// The settings file, then the command line over it.
bool settle(const SyncOptions& options, SyncSettings& settings, std::string& error) {
    bool found = false;
    if (!settings.read(SyncSettings::filePath(), found, error))
        return false;
    if (!found && options.url.empty() && options.user.empty() && !options.setup) {
        error = "not set up yet: run pindle_sync --setup --url SERVER-URL --user NAME once";
        return false;
    }
    return settings.complete(options, found, error);
}

// A URL the sync will not use is refused before any request; it is not a
// misuse of the command line, so no pointer to --help.
bool acceptUrl(const SyncSettings& settings, std::string& error) {
    if (DavClient::checkUrl(settings.url, settings.allowHttp, error))
        return true;
    error = settings.origin("url") + error;
    return false;
}

} // namespace

int main(int argc, char** argv) {
    SyncOptions options;
    std::string error;
    if (!SyncOptions::parse(argc, argv, options, error))
        return fail(kUsage, error + "\nTry 'pindle_sync --help'.");
    if (options.help) {
        std::cout << SyncOptions::helpText();
        return 0;
    }
    SyncSettings settings;
    if (!settle(options, settings, error))
        return fail(kUsage, error + "\nTry 'pindle_sync --help'.");
    if (!acceptUrl(settings, error))
        return fail(kUsage, error);
    DataReport::setSink(reportFailuresOnly);
    curl_global_init(CURL_GLOBAL_DEFAULT);
    int status = 0;
    Credentials credentials;
    if (options.setup)
        status = SyncSetup::run(settings, options.taskList, error) ? 0 : fail(kFailed, error);
    else if (!Credentials::gather(settings.url, settings.user, settings.password, credentials,
                                  error))
        status = fail(kFailed, error);
    else
        status = syncIn(settings, options, credentials);
    curl_global_cleanup();
    return status;
}
