// What the reminders announced on one day, kept in ".pindle_remind.json" beside the data files
// (as the sync keeps its state), readable by the owner alone: each to-do by its date and
// description, as many times as such a to-do was announced. A later run the same day announces
// only what became due or overdue since; a run on another day announces all that is due again.
#ifndef PINDLE_ANNOUNCED_TODAY_H
#define PINDLE_ANNOUNCED_TODAY_H

#include "due_list.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

class AnnouncedToday {
public:
    static constexpr const char* kFileName = ".pindle_remind.json";

    // Reads the file from the current directory; a missing one holds nothing. False, with a
    // reason, for a file that cannot be read as one: it then holds nothing either.
    bool load(std::string& error);
    // Written whole, for the owner alone.
    bool save(std::string& error) const;

    // Those of `due` not announced on `today` yet, in their order; from now on they count as
    // announced. Two to-dos alike in date and description count as two.
    std::vector<DueTodo> announce(const std::vector<DueTodo>& due, const std::string& today);

private:
    using Key = std::pair<std::string, std::string>; // date, description

    std::string day_;
    std::map<Key, int> times_;
};

#endif
