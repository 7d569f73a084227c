// Which task list a sync is with, and whether the folder's state belongs to it. The list is
// known by the URL as set up or as the server names it, both in normal form; a URL that is
// neither is asked about once. A state kept for another list or user is refused rather than
// paired again by content, unless the person asks to start over.
#ifndef PINDLE_COLLECTION_CHECK_H
#define PINDLE_COLLECTION_CHECK_H

#include "dav_client.h"
#include "sync_state.h"

#include <string>

namespace CollectionCheck {

enum class Verdict {
    Same,    // the state's list, or a first sync: the client is aimed at it
    Failed,  // the server could not tell (unreachable, refused the sign-in)
    Refused, // no task list, or another than the state's: `error` says what to do
};

// `state` is made a new start for the list when it is a first sync or `startOver`.
Verdict aim(const std::string& url, const std::string& user, bool startOver, SyncState& state,
            DavClient& client, std::string& error);

} // namespace CollectionCheck

#endif
