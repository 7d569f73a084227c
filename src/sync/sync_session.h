// One sync of a data folder with its collection, in three steps so that the folder is locked
// only while its files are read and written, never while the server is asked: scan reads what
// changed on the server; settle, under the folder's lock, finds what changed in the files as they
// are now, takes the server's changes into the stores and leaves a state that matches them; send
// then sends the local changes to the server (each write conditional on the ETag it last saw, so
// a task changed meanwhile is never overwritten) and brings the state up to date.
//
// Each synced to-do settles field by field (FieldMerge): what one side changed is taken by the
// other, what both changed differently is kept twice (the server's version comes down as a new
// local to-do linked to the task, the local one goes up as a new task), and one changed on one
// side and deleted on the other is kept as changed. Only the fields changed here go up, put on
// the server's own copy of the task, so that what the mapping filled in here for a task that
// lacked it (a date, a priority) stays absent there. A write that fails leaves its fields as they
// were in the state, so that the next sync tries again; so does a to-do changed in the files
// after settle, which the next sync finds changed.
#ifndef PINDLE_SYNC_SESSION_H
#define PINDLE_SYNC_SESSION_H

#include "cal_date.h"
#include "category_store.h"
#include "dav_client.h"
#include "field_merge.h"
#include "progress.h"
#include "remote_scan.h"
#include "sync_state.h"
#include "todo_store.h"

#include <string>
#include <unordered_map>
#include <vector>

class SyncSession {
public:
    struct Tally {
        int sentNew = 0, sentChanged = 0, sentDeleted = 0;
        int gotNew = 0, gotChanged = 0, gotDeleted = 0;
        int merged = 0; // changed on both sides in different fields, now one
        int conflicts = 0;
        int unsent = 0; // writes that failed, left for the next sync
        int raced = 0;  // writes refused because the task changed on the server meanwhile
    };

    SyncSession(DavClient& client, TodoStore& todos, CategoryStore& categories, SyncState& state,
                Progress& progress, bool dryRun);

    // Reads what changed on the server since the state's token, or every task's ETag from a
    // server without tokens. False, with a reason, when the server's changes could not be read;
    // nothing has changed then.
    bool scan(std::string& error);

    // Takes the server's changes into the stores as they are now, and decides what goes up.
    // The state then matches the stores (local changes not sent yet are left as they were, for
    // the next sync to find again), to be saved with them.
    void settle();

    // Sends what settle left to send; the state then holds the result (see tally() for what
    // failed).
    void send();

    const Tally& tally() const { return tally_; }
    bool localChanged() const { return todosChanged_; }
    bool categoriesChanged() const { return categoriesChanged_; }
    const std::string& firstFailure() const { return firstFailure_; }
    // One line per write the server refused: the to-do, what was sent and the server's answer.
    const std::vector<std::string>& refusals() const { return refusals_; }
    // With dryRun, one line per change that would be made.
    const std::vector<std::string>& plan() const { return plan_; }

private:
    struct Upload {
        TodoRecord* record;
        std::string serverIcs; // empty until fetched
        TodoField::Set fields; // those changed here
    };

    void matchLocal();
    bool fetchChanged(std::string& error);
    void fetchUploadBases();
    ServerTask* listed(const SyncEntry& entry, bool& gone);
    void guessRemoteBase(SyncEntry& entry, const ServerTask& task);
    TodoField::Set agreement(const TodoRecord& record, const ServerTask& task);
    void settleEntry(std::size_t index);
    void relink(TodoRecord* record, SyncEntry entry, const ServerTask* task);
    void settleMerge(TodoRecord* record, SyncEntry entry, const ServerTask* task,
                     const FieldMerge::Result& merge);
    void keepBoth(TodoRecord* record, const SyncEntry& entry, const ServerTask& task);
    void takeServerAdds();

    void takeNew(const ServerTask& task, SyncEntry entry, TodoRecord* record);
    void takeFields(TodoRecord* record, const ServerTask& task, TodoField::Set fields);
    void removeHere(TodoRecord* record);
    void ensureCategory(const char* name);

    void sendAll();
    void sendNew(TodoRecord* record);
    void sendChanged(const Upload& upload);
    void sendDelete(const SyncEntry& entry);
    bool write(const char* method, const std::string& path, const std::string& body,
               const std::vector<std::string>& headers, HttpReply& reply);
    bool accepted(const std::string& what, bool sent, const HttpReply& reply);
    void catchUpToken();
    void note(const std::string& line);
    void rebuildState(const std::vector<SyncEntry>& stillOnServer);

    DavClient& client_;
    TodoStore& todos_;
    CategoryStore& categories_;
    SyncState& state_;
    Progress& progress_;
    bool dryRun_;
    RemoteScan scan_;
    std::string token_;
    bool tokenless_ = false;
    CalDate today_{};

    std::vector<TodoRecord*> records_; // the local list as found
    std::vector<int> entryRecord_;     // per state entry: its index in records_, or -1
    std::vector<bool> recordHasEntry_; // per record of records_
    std::unordered_map<const TodoRecord*, SyncEntry> links_;
    std::vector<SyncEntry> dangling_; // deleted here, not yet on the server
    std::vector<TodoRecord*> newUploads_;
    std::vector<Upload> changedUploads_;
    std::vector<SyncEntry> deletions_;

    Tally tally_;
    bool todosChanged_ = false;
    bool categoriesChanged_ = false;
    bool offline_ = false;
    std::string firstFailure_;
    std::vector<std::string> refusals_;
    std::vector<std::string> plan_;
};

#endif
