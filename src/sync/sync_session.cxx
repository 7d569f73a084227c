// Deciding each to-do's fate from what each side did, then carrying it out.
#include "sync_session.h"

#include "cal_date.h"
#include "local_matcher.h"
#include "task_writer.h"
#include "utf8_text.h"

#include <cstring>
#include <ctime>
#include <memory>
#include <set>

namespace {

const char* const kCalendarType = "Content-Type: text/calendar; charset=utf-8";

std::string quoted(const TodoRecord& record) {
    return "\"" +
           Utf8Text::fit(std::string(record.description, strnlen(record.description, 50)), 50) +
           "\"";
}

bool succeeded(long status) {
    return status >= 200 && status <= 299;
}

// The task as the state remembers it from now on, when the listing showed it.
void remember(SyncEntry& entry, const ServerTask* task) {
    if (task == nullptr)
        return;
    entry.etag = task->etag;
    entry.remote = task->todo.fieldDigests();
    entry.remoteKnown = true;
}

} // namespace

SyncSession::SyncSession(DavClient& client, TodoStore& todos, CategoryStore& categories,
                         SyncState& state, Progress& progress, bool dryRun)
    : client_(client), todos_(todos), categories_(categories), state_(state), progress_(progress),
      dryRun_(dryRun), scan_(client) {}

bool SyncSession::scan(std::string& error) {
    return scan_.list(state_.syncToken, state_.tokenless, error) && fetchChanged(error);
}

void SyncSession::settle() {
    CalDate::today(today_.month, today_.day, today_.year);
    matchLocal();
    for (std::size_t i = 0; i < state_.entries.size(); i++)
        settleEntry(i);
    takeServerAdds();
    token_ = scan_.newToken();
    tokenless_ = scan_.tokenless();
    // Tasks to delete are still on the server until send() deletes them.
    rebuildState(deletions_);
}

void SyncSession::send() {
    fetchUploadBases();
    sendAll();
    // Without a token the ETags the writes returned are what the next listing compares with.
    if (!dryRun_ && !tokenless_ && tally_.sentNew + tally_.sentChanged + tally_.sentDeleted > 0)
        catchUpToken();
    rebuildState(dangling_);
}

void SyncSession::matchLocal() {
    std::vector<RecordDigest> now, last;
    for (TodoRecord* r = todos_.head; r != nullptr; r = r->next) {
        records_.push_back(r);
        now.push_back(RecordDigest::of(*r));
    }
    for (const SyncEntry& e : state_.entries)
        last.push_back(e.local);
    entryRecord_ = LocalMatcher::match(last, now);
    recordHasEntry_.assign(records_.size(), false);
    for (int index : entryRecord_) {
        if (index >= 0)
            recordHasEntry_[index] = true;
    }
}

// A listing may leave out calendar data; every task changed or new there is wanted before
// anything is decided. Which to-dos changed here is not known yet: the files are read later.
bool SyncSession::fetchChanged(std::string& error) {
    std::vector<std::string> wanted;
    std::unordered_map<std::string, const SyncEntry*> known;
    for (const SyncEntry& e : state_.entries)
        known[e.path] = &e;
    for (const auto& [path, task] : scan_.present()) {
        auto entry = known.find(path);
        if (task.ics.empty() && (entry == known.end() || entry->second->etag != task.etag))
            wanted.push_back(path);
    }
    return wanted.empty() || scan_.fetch(wanted, error);
}

// A changed to-do goes up over the server's copy of its task, so that what other clients keep
// on it stays; a listing from a token holds no task unchanged there, and any listing may leave
// the data out. Those copies are fetched now. If that fails the uploads go without them, and
// the first of them finds the server unreachable.
void SyncSession::fetchUploadBases() {
    std::vector<std::string> wanted;
    for (const Upload& upload : changedUploads_) {
        if (upload.serverIcs.empty())
            wanted.push_back(links_[upload.record].path);
    }
    std::string error;
    if (dryRun_ || wanted.empty() || !scan_.fetch(wanted, error))
        return;
    for (Upload& upload : changedUploads_) {
        auto found = scan_.present().find(links_[upload.record].path);
        if (upload.serverIcs.empty() && found != scan_.present().end())
            upload.serverIcs = found->second.ics;
    }
}

// The entry's task as the listing shows it, or null when the listing does not show it (it is
// unchanged) or it holds no readable task (left as it was); `gone` when the server no longer
// has it.
ServerTask* SyncSession::listed(const SyncEntry& entry, bool& gone) {
    auto found = scan_.present().find(entry.path);
    if (found != scan_.present().end())
        return found->second.readable ? &found->second : nullptr;
    gone = scan_.complete();
    for (const std::string& path : scan_.removed())
        gone = gone || path == entry.path;
    return nullptr;
}

// A state of the first version kept no digest of the task's fields. A field whose value the task
// now has in the record's terms is the one both sides had; the others count as changed there.
void SyncSession::guessRemoteBase(SyncEntry& entry, const ServerTask& task) {
    auto mapped = std::make_unique<TodoRecord>();
    task.todo.fill(*mapped, today_);
    RecordDigest::Fields there = task.todo.fieldDigests();
    RecordDigest::Fields mappedHere = RecordDigest::of(*mapped).fields;
    for (int f = 0; f < TodoField::kCount; f++)
        entry.remote[f] = mappedHere[f] == entry.local.fields[f] ? there[f] : ~there[f];
    entry.remoteKnown = true;
}

// The fields whose values the record and the task share, in the record's terms.
TodoField::Set SyncSession::agreement(const TodoRecord& record, const ServerTask& task) {
    auto fromServer = std::make_unique<TodoRecord>(record);
    task.todo.fill(*fromServer, today_);
    RecordDigest::Fields here = RecordDigest::of(record).fields;
    RecordDigest::Fields there = RecordDigest::of(*fromServer).fields;
    TodoField::Set out;
    for (int f = 0; f < TodoField::kCount; f++)
        out[f] = here[f] == there[f];
    return out;
}

void SyncSession::settleEntry(std::size_t index) {
    using FieldMerge::Fate;
    SyncEntry entry = state_.entries[index];
    int at = entryRecord_[index];
    TodoRecord* record = at >= 0 ? records_[at] : nullptr;
    bool gone = false;
    ServerTask* task = listed(entry, gone);
    bool changedThere = task != nullptr && task->etag != entry.etag;
    if (!entry.remoteKnown && task != nullptr)
        guessRemoteBase(entry, *task);
    RecordDigest::Fields here =
        record != nullptr ? RecordDigest::of(*record).fields : RecordDigest::Fields{};
    RecordDigest::Fields there = changedThere ? task->todo.fieldDigests() : entry.remote;
    TodoField::Set agree =
        record != nullptr && changedThere ? agreement(*record, *task) : TodoField::Set();
    FieldMerge::Result merge =
        FieldMerge::merge({entry.local.fields, record != nullptr ? &here : nullptr},
                          {entry.remote, gone ? nullptr : &there}, agree);
    switch (merge.fate) {
    case Fate::Same:
        relink(record, entry, task);
        break;
    case Fate::Merge:
        settleMerge(record, entry, task, merge);
        break;
    case Fate::KeepBoth:
        keepBoth(record, entry, *task);
        break;
    case Fate::DeleteHere:
        removeHere(record);
        break;
    case Fate::DeleteThere:
        deletions_.push_back(entry);
        break;
    case Fate::TakeBack:
        takeNew(*task, entry, new TodoRecord);
        break;
    case Fate::SendAgain:
        newUploads_.push_back(record);
        break;
    case Fate::Forget:
        break;
    }
}

// Nothing to write: the state takes both sides as they are now (a task changed there in
// nothing a to-do shows has a new ETag, and that is all).
void SyncSession::relink(TodoRecord* record, SyncEntry entry, const ServerTask* task) {
    entry.local = RecordDigest::of(*record);
    remember(entry, task);
    links_[record] = entry;
}

// The server's fields come down now; those changed here keep their digests of the last sync in
// the state until the server has them, so that a write that fails is tried again.
void SyncSession::settleMerge(TodoRecord* record, SyncEntry entry, const ServerTask* task,
                              const FieldMerge::Result& merge) {
    if (merge.fromServer.any())
        takeFields(record, *task, merge.fromServer);
    if (merge.fromServer.any() && merge.fromHere.any())
        tally_.merged++;
    RecordDigest now = RecordDigest::of(*record);
    for (int f = 0; f < TodoField::kCount; f++) {
        if (merge.fromHere[f])
            now.fields[f] = entry.local.fields[f];
    }
    entry.local = now;
    remember(entry, task);
    links_[record] = entry;
    if (merge.fromHere.any())
        changedUploads_.push_back({record, task != nullptr ? task->ics : "", merge.fromHere});
}

void SyncSession::keepBoth(TodoRecord* record, const SyncEntry& entry, const ServerTask& task) {
    tally_.conflicts++;
    note("both sides changed " + quoted(*record) + ": keeping both");
    newUploads_.push_back(record);
    takeNew(task, entry, new TodoRecord);
}

// Tasks the state does not know. One that matches a to-do new here field for field is that
// to-do already (sent by a sync that stopped before it could save its state, or made on both
// sides): the two are linked rather than doubled.
void SyncSession::takeServerAdds() {
    std::set<std::string> known;
    for (const SyncEntry& e : state_.entries)
        known.insert(e.path);
    std::unordered_multimap<std::uint64_t, TodoRecord*> newHere;
    for (std::size_t i = 0; i < records_.size(); i++) {
        if (!recordHasEntry_[i])
            newHere.emplace(RecordDigest::of(*records_[i]).whole, records_[i]);
    }
    for (auto& [path, task] : scan_.present()) {
        if (known.count(path) != 0 || !task.readable)
            continue;
        SyncEntry entry{task.todo.uid, path, task.etag, {}, task.todo.fieldDigests()};
        auto fromServer = std::make_unique<TodoRecord>();
        task.todo.fill(*fromServer, today_);
        auto twin = newHere.find(RecordDigest::of(*fromServer).whole);
        if (twin == newHere.end()) {
            takeNew(task, entry, fromServer.release());
            continue;
        }
        entry.local = RecordDigest::of(*twin->second);
        links_[twin->second] = entry;
        newHere.erase(twin);
    }
    for (auto& [digest, record] : newHere)
        newUploads_.push_back(record);
}

// A task comes down as a new to-do at the end of the list, linked to it.
void SyncSession::takeNew(const ServerTask& task, SyncEntry entry, TodoRecord* record) {
    note("down: new \"" + task.todo.summary + "\"");
    task.todo.fill(*record, today_);
    ensureCategory(task.todo.category.c_str());
    record->next = nullptr;
    todos_.append(record);
    tally_.gotNew++;
    entry.local = RecordDigest::of(*record);
    remember(entry, &task);
    links_[record] = entry;
    todosChanged_ = true;
}

// Only the fields changed there: a date or priority filled in here when the task came down
// stays as it was when the task still has none.
void SyncSession::takeFields(TodoRecord* record, const ServerTask& task, TodoField::Set fields) {
    note("down: changed \"" + task.todo.summary + "\"");
    task.todo.fill(*record, today_, fields);
    if (fields[TodoField::Category])
        ensureCategory(task.todo.category.c_str());
    tally_.gotChanged++;
    todosChanged_ = true;
}

void SyncSession::removeHere(TodoRecord* record) {
    note("down: deleted " + quoted(*record));
    links_.erase(record);
    todos_.remove(record);
    tally_.gotDeleted++;
    todosChanged_ = true;
}

void SyncSession::ensureCategory(const char* name) {
    if (categories_.find(name) != nullptr)
        return;
    auto* category = new CategoryRecord;
    category->setName(name);
    categories_.append(category);
    categoriesChanged_ = true;
}

void SyncSession::sendAll() {
    progress_.start(
        static_cast<int>(newUploads_.size() + changedUploads_.size() + deletions_.size()));
    for (const Upload& upload : changedUploads_)
        sendChanged(upload);
    for (const SyncEntry& entry : deletions_)
        sendDelete(entry);
    // In list order, so that the tasks are made in the order the to-dos were.
    std::set<const TodoRecord*> wanted(newUploads_.begin(), newUploads_.end());
    for (TodoRecord* r = todos_.head; r != nullptr; r = r->next) {
        if (wanted.count(r) != 0)
            sendNew(r);
    }
}

// Once one write cannot reach the server, the rest are not tried: each would wait out the
// same failure, and all are left for the next sync. A connection the server broke while a
// write was on its way is that write's refusal: the server was there, and the rest go on.
bool SyncSession::write(const char* method, const std::string& path, const std::string& body,
                        const std::vector<std::string>& headers, HttpReply& reply) {
    if (offline_)
        return false;
    std::string error;
    if (client_.send(method, path, body, headers, reply, error))
        return true;
    if (reply.brokenOff.empty()) {
        offline_ = true;
        firstFailure_ = error;
    }
    return false;
}

// A refusal names its to-do, so that the person can find what the server will not take.
bool SyncSession::accepted(const std::string& what, bool sent, const HttpReply& reply) {
    progress_.step();
    if (sent && succeeded(reply.status))
        return true;
    if (sent && reply.status == 412) {
        tally_.raced++;
        return false;
    }
    tally_.unsent++;
    if (sent)
        refusals_.push_back(what + ": " + describeReply(reply));
    else if (!reply.brokenOff.empty())
        refusals_.push_back(what +
                            ": the server broke off the connection while it was being sent (" +
                            reply.brokenOff + ")");
    return false;
}

void SyncSession::sendNew(TodoRecord* record) {
    note("up: new " + quoted(*record));
    if (dryRun_)
        return;
    std::string uid = TaskWriter::newUid();
    std::string path = client_.collectionPath() + uid + ".ics";
    std::string body = TaskWriter::build(*record, uid, "", std::time(nullptr));
    HttpReply reply;
    bool sent = write("PUT", path, body, {kCalendarType, "If-None-Match: *"}, reply);
    if (!accepted(quoted(*record) + " (a new task)", sent, reply))
        return;
    ServerTodo echo;
    ServerTodo::parse(body, echo);
    links_[record] = {uid, path, reply.etag, RecordDigest::of(*record), echo.fieldDigests()};
    tally_.sentNew++;
}

void SyncSession::sendChanged(const Upload& upload) {
    SyncEntry& entry = links_[upload.record];
    note("up: changed " + quoted(*upload.record));
    if (dryRun_)
        return;
    std::string body = TaskWriter::build(*upload.record, entry.uid, upload.serverIcs,
                                         std::time(nullptr), upload.fields);
    HttpReply reply;
    bool sent = write("PUT", entry.path, body, {kCalendarType, "If-Match: " + entry.etag}, reply);
    if (!accepted(quoted(*upload.record) + " (a change)", sent, reply))
        return;
    ServerTodo echo;
    ServerTodo::parse(body, echo);
    entry.etag = reply.etag;
    entry.local = RecordDigest::of(*upload.record);
    entry.remote = echo.fieldDigests();
    entry.remoteKnown = true;
    tally_.sentChanged++;
}

void SyncSession::sendDelete(const SyncEntry& entry) {
    note("up: deleted task " + entry.uid);
    if (dryRun_)
        return;
    HttpReply reply;
    bool sent = write("DELETE", entry.path, "", {"If-Match: " + entry.etag}, reply);
    // Already gone is as good as deleted.
    if (sent && reply.status == 404) {
        progress_.step();
        tally_.sentDeleted++;
        return;
    }
    if (accepted("the to-do deleted here (task " + entry.uid + ")", sent, reply))
        tally_.sentDeleted++;
    else
        dangling_.push_back(entry);
}

// The token read before this sync's own writes would show them to the next sync as changes. When
// a listing from it holds nothing but those writes, its newer token is taken, so that the next
// sync has nothing to read; anything else there leaves the older token for the next sync.
void SyncSession::catchUpToken() {
    RemoteScan after(client_);
    std::string error;
    if (!after.list(token_, false, error) || after.complete())
        return;
    std::unordered_map<std::string, std::string> ours;
    for (const auto& [record, entry] : links_)
        ours[entry.path] = entry.etag;
    for (const auto& [path, task] : after.present()) {
        auto found = ours.find(path);
        if (found == ours.end() || found->second != task.etag || task.etag.empty())
            return;
    }
    for (const std::string& path : after.removed()) {
        if (ours.count(path) != 0)
            return;
    }
    token_ = after.newToken();
}

void SyncSession::note(const std::string& line) {
    if (dryRun_)
        plan_.push_back(line);
}

// The entries in the order of the local list, then those deleted here that the server still has.
void SyncSession::rebuildState(const std::vector<SyncEntry>& stillOnServer) {
    state_.entries.clear();
    for (TodoRecord* r = todos_.head; r != nullptr; r = r->next) {
        auto found = links_.find(r);
        if (found != links_.end())
            state_.entries.push_back(found->second);
    }
    state_.entries.insert(state_.entries.end(), stillOnServer.begin(), stillOnServer.end());
    state_.syncToken = token_;
    state_.tokenless = tokenless_;
}
