// pindle_sync's entry: checks the command line, the password and the folder, takes the folder's
// lock, loads the stores, runs the sync (a second time when a task changed on the server while
// the first ran), then saves the stores and the state and says what happened.
#include "category_store.h"
#include "credentials.h"
#include "dav_client.h"
#include "folder_lock.h"
#include "progress.h"
#include "sync_options.h"
#include "sync_session.h"
#include "sync_state.h"
#include "todo_store.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <curl/curl.h>
#include <fcntl.h>
#include <iostream>
#include <memory>
#include <sys/stat.h>
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

// A data file that is there but cannot be read would load as an empty list, and the sync would
// take every to-do for deleted: that is refused. A missing one is a first start.
bool checkFile(const char* name, bool& present, std::string& error) {
    present = access(name, F_OK) == 0;
    if (present && access(name, R_OK | W_OK) != 0)
        error = std::string("cannot read and write ") + name + ": " + std::strerror(errno);
    return error.empty();
}

// A store that frees its records with itself: the program's own never do, as they live until
// it ends, but a sync's are checked for leaks.
template <class Store> struct OwnedStore : Store {
    ~OwnedStore() { this->clear(); }
};

// The stores say on stderr that a missing file could not be opened; for a sync that is no news.
template <class Store> std::unique_ptr<OwnedStore<Store>> loadQuietly(bool present) {
    if (present)
        return std::make_unique<OwnedStore<Store>>();
    int saved = dup(STDERR_FILENO);
    int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(null, STDERR_FILENO);
    auto store = std::make_unique<OwnedStore<Store>>();
    dup2(saved, STDERR_FILENO);
    close(null);
    close(saved);
    return store;
}

void report(const SyncSession::Tally& t, int requests, int writes) {
    std::printf("pindle_sync: sent %d new, %d changed, %d deleted; received %d new, %d changed, "
                "%d deleted; %d kept twice; %d requests, %d writes\n",
                t.sentNew, t.sentChanged, t.sentDeleted, t.gotNew, t.gotChanged, t.gotDeleted,
                t.conflicts, requests, writes);
}

struct Folder {
    std::unique_ptr<OwnedStore<TodoStore>> todos;
    std::unique_ptr<OwnedStore<CategoryStore>> categories;
    SyncState state;
};

void add(SyncSession::Tally& total, const SyncSession::Tally& t) {
    total.sentNew += t.sentNew;
    total.sentChanged += t.sentChanged;
    total.sentDeleted += t.sentDeleted;
    total.gotNew += t.gotNew;
    total.gotChanged += t.gotChanged;
    total.gotDeleted += t.gotDeleted;
    total.conflicts += t.conflicts;
    total.unsent += t.unsent;
    // Only the last pass says whether a race is left.
    total.raced = t.raced;
}

int syncFolder(const SyncOptions& options, DavClient& client, Folder& folder) {
    Progress progress;
    SyncSession::Tally total;
    std::string failure;
    bool changedTodos = false, changedCategories = false;
    for (int pass = 0; pass < kPasses; pass++) {
        SyncSession session(client, *folder.todos, *folder.categories, folder.state, progress,
                            options.dryRun);
        std::string error;
        if (!session.run(error))
            return fail(kFailed, error);
        for (const std::string& line : session.plan())
            std::printf("%s\n", line.c_str());
        add(total, session.tally());
        if (failure.empty())
            failure = session.firstFailure();
        changedTodos = changedTodos || session.localChanged();
        changedCategories = changedCategories || session.categoriesChanged();
        if (total.raced == 0 || options.dryRun)
            break;
    }
    if (options.dryRun)
        return 0;
    if (changedCategories)
        folder.categories->save();
    if (changedTodos)
        folder.todos->save();
    std::string error;
    if (!folder.state.save(error))
        return fail(kFailed, error);
    report(total, client.requests(), client.writes());
    if (total.raced > 0)
        return fail(kFailed, "a task kept changing on the server during the sync; run it again");
    if (!failure.empty())
        return fail(kFailed, std::to_string(total.unsent) + " changes not sent (" + failure +
                                 "); run the sync again");
    return 0;
}

int syncIn(const SyncOptions& options, const Credentials& credentials) {
    if (chdir(options.dir.c_str()) != 0)
        return fail(kFailed, "cannot enter folder " + options.dir + ": " + std::strerror(errno));
    FolderLock lock(".");
    if (lock.state() == FolderLock::State::Busy)
        return fail(kBusy, options.dir + " is open in Pindle ToDo or another sync; close it first");
    if (lock.state() != FolderLock::State::Held)
        return fail(kFailed, "cannot lock folder " + options.dir);
    bool haveTodos = false, haveCategories = false;
    std::string error;
    if (!checkFile("pindle_todo.db", haveTodos, error) ||
        !checkFile("cat.db", haveCategories, error))
        return fail(kFailed, error);
    Folder folder{nullptr, nullptr, {}};
    if (!folder.state.load(options.url, options.user, error))
        return fail(kFailed, error);
    if (!haveTodos && !folder.state.entries.empty())
        return fail(kFailed, "pindle_todo.db is missing although to-dos were synced from it");
    folder.todos = loadQuietly<TodoStore>(haveTodos);
    folder.categories = loadQuietly<CategoryStore>(haveCategories);
    DavClient client(options.url, credentials);
    return syncFolder(options, client, folder);
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
    if (!DavClient::checkUrl(options.url, options.allowHttp, error))
        return fail(kUsage, error);
    Credentials credentials;
    if (!Credentials::gather(options.user, options.passwordFile, credentials, error))
        return fail(kFailed, error);
    curl_global_init(CURL_GLOBAL_DEFAULT);
    int status = syncIn(options, credentials);
    curl_global_cleanup();
    return status;
}
