// Finds where a person's tasks live on a CalDAV server from any URL on it, as phones and
// desktop clients do: what the URL itself is (a PROPFIND of it, following redirections), else the
// user's principal (from the URL, from /.well-known/caldav of RFC 6764, or from the server's
// root), its calendar-home-set, and there the calendars that take VTODOs (RFC 4791). Makes a task
// list when there is none. Reads and makes collections only, never tasks.
#ifndef PINDLE_COLLECTION_FINDER_H
#define PINDLE_COLLECTION_FINDER_H

#include "dav_client.h"

#include <string>
#include <vector>

class CollectionFinder {
public:
    // What is at a URL, as the server names it.
    struct Place {
        std::string url; // absolute, in normal form
        bool isTaskList = false;
        std::string name; // the display name, else the last part of the path
        std::string principal, home;
    };

    explicit CollectionFinder(DavClient& client) : client_(client) {}

    // Asks the server what `url` is, following its redirections; the client is left aimed at
    // it. False, with a reason, when the server cannot be reached or refuses.
    bool look(const std::string& url, Place& place, std::string& error);

    // The task lists of the person signed in, found from `start` (a place on their server), in
    // the order the server lists them; `home` is where a new one would go. False, with a reason,
    // when the server names no calendar home for them.
    bool taskLists(const Place& start, std::vector<Place>& lists, std::string& home,
                   std::string& error);

    // Makes a task list named `name` in `home` (MKCALENDAR, for VTODOs alone).
    bool make(const std::string& home, const std::string& name, Place& made, std::string& error);

private:
    bool ask(const std::string& url, const char* depth, std::vector<Place>& places,
             std::string& error);
    bool findHome(const Place& start, std::string& home, std::string& error);

    DavClient& client_;
};

#endif
