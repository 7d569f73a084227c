// The state's list against the one a sync is given.
#include "collection_check.h"

#include "collection_finder.h"
#include "collection_url.h"

namespace CollectionCheck {

Verdict aim(const std::string& url, const std::string& user, bool startOver, SyncState& state,
            DavClient& client, std::string& error) {
    const std::string given = CollectionUrl::normal(url);
    if (!startOver && state.knows(given, user)) {
        client.aimAt(state.collection);
        return Verdict::Same;
    }
    CollectionFinder::Place place;
    if (!CollectionFinder(client).look(url, place, error))
        return Verdict::Failed;
    if (!place.isTaskList) {
        error = url +
                " is not a task list (a CalDAV calendar that takes tasks); run pindle_sync "
                "--setup --url " +
                url + " --user " + user + " to find yours";
        return Verdict::Refused;
    }
    bool fresh = state.url.empty() && state.collection.empty();
    if (!startOver && !fresh && !state.belongsTo(given, place.url, user)) {
        error = "this folder is synced with " +
                (state.collection.empty() ? state.url : state.collection) + " as " + state.user +
                ", not with " + place.url + " as " + user +
                "; to sync it with the new one from now on, run pindle_sync --start-over (its "
                "to-dos and the tasks there are then paired by their fields, and nothing is "
                "deleted on either side)";
        return Verdict::Refused;
    }
    if (startOver || fresh)
        state.startOver(given, place.url, user);
    state.collection = place.url;
    return Verdict::Same;
}

} // namespace CollectionCheck
