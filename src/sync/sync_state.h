// The sync's own memory of the last sync, kept in ".pindle_sync.json" beside the data files:
// the collection it belongs to (the URL as set up and the collection as the server names it,
// both in normal form) and the user, the server's sync token (null for a server without
// sync-collection, whose tasks are told apart by ETag alone), and per synced to-do (in the order
// of the local file) its task's UID, path and ETag and a digest of each field as each side had
// it. It is written whole to a temporary file that then replaces the old one, readable by its
// owner only.
#ifndef PINDLE_SYNC_STATE_H
#define PINDLE_SYNC_STATE_H

#include "record_digest.h"

#include <cstdint>
#include <string>
#include <vector>

struct SyncEntry {
    std::string uid;
    std::string path; // decoded, on the server
    std::string etag;
    RecordDigest local;
    RecordDigest::Fields remote{}; // ServerTodo::fieldDigests() of the task as last seen
    // False in a state of the first version, which kept one digest of the whole task: its
    // fields are then judged by what they mean here (see SyncSession).
    bool remoteKnown = true;
};

class SyncState {
public:
    static constexpr const char* kFileName = ".pindle_sync.json";

    std::string url;        // as set up; empty without a state
    std::string collection; // as the server names it; empty before it was asked
    std::string user;
    std::string syncToken;  // empty before the first sync
    bool tokenless = false; // the server offers no sync-collection: its ETags are listed
    std::vector<SyncEntry> entries;

    // Reads the file in the current directory; a missing file leaves the state empty. False
    // only for a file that cannot be read or understood.
    bool load(std::string& error);
    bool save(std::string& error) const;

    // Whether the state belongs to `user` at the collection `url` names (in normal form), as
    // far as it can tell without the server: the URL as set up, or as the server names it.
    bool knows(const std::string& normalUrl, const std::string& forUser) const;
    // Whether it belongs to `user` at `collection`, as the server names it.
    bool belongsTo(const std::string& normalUrl, const std::string& collectionUrl,
                   const std::string& forUser) const;
    // A state for a new start with that collection: nothing synced yet.
    void startOver(const std::string& normalUrl, const std::string& collectionUrl,
                   const std::string& forUser);
};

#endif
