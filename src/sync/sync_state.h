// The sync's own memory of the last sync, kept in ".pindle_sync.json" beside the data files:
// the collection it was with, the server's sync token (null for a server without sync-collection,
// whose tasks are told apart by ETag alone), and per synced to-do (in the order of the local file)
// its task's UID, path and ETag and the digests each side had. It is written
// whole to a temporary file that then replaces the old one, readable by its owner only.
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
    std::uint64_t remote = 0; // ServerTodo::digest() of the task as last seen
};

class SyncState {
public:
    static constexpr const char* kFileName = ".pindle_sync.json";

    std::string url;
    std::string user;
    std::string syncToken;  // empty before the first sync
    bool tokenless = false; // the server offers no sync-collection: its ETags are listed
    std::vector<SyncEntry> entries;

    // Reads the file in the current directory. A missing file, or one kept for another
    // collection or user, leaves the state empty: everything then counts as new on both sides,
    // which loses nothing. False only for a file that cannot be read or understood.
    bool load(const std::string& forUrl, const std::string& forUser, std::string& error);
    bool save(std::string& error) const;
};

#endif
