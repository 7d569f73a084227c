// The to-dos a reminder is about: the open ones due today or before, in the list's own order (by
// date and priority, ties as the window shows them), each with what a notification shows of it.
// Only the record's fixed fields are read, never its notes.
#ifndef PINDLE_DUE_LIST_H
#define PINDLE_DUE_LIST_H

#include <string>
#include <vector>

class TodoStore;

struct DueTodo {
    std::string due;         // month/day/year, as the list shows it
    std::string description; // cut at its field, valid UTF-8
    bool overdue;

    bool operator==(const DueTodo& other) const {
        return due == other.due && description == other.description && overdue == other.overdue;
    }
};

namespace DueList {

// `todayNumber` is today's day number (CalDate::dayNumber). A completed to-do is never due.
std::vector<DueTodo> collect(const TodoStore& todos, int todayNumber);

} // namespace DueList

#endif
