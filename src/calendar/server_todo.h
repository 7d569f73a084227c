// A task as the server holds it, read from its iCalendar with libical and mapped onto the
// fields of a to-do record: texts made valid UTF-8 and cut to their fields at a character
// boundary, the priority and date given their defaults.
#ifndef PINDLE_SERVER_TODO_H
#define PINDLE_SERVER_TODO_H

#include "cal_date.h"
#include "todo_store.h"

#include <cstddef>
#include <cstdint>
#include <string>

struct ServerTodo {
    static constexpr int kDefaultPriority = 5;
    static constexpr std::size_t kLineBytes = 50;
    static constexpr const char* kDefaultCategory = "Unassigned";

    std::string uid;
    std::string summary;
    std::string notes;
    std::string category;
    bool hasDue = false;
    int year = 0, month = 0, day = 0;
    int priority = kDefaultPriority; // 1-9 as the list shows it
    bool completed = false;

    // Reads the first VTODO of an iCalendar object. False when there is none, or it cannot be
    // read at all; missing properties get their defaults.
    static bool parse(const std::string& ics, ServerTodo& out);

    // Writes the fields into `record`, whose other bytes it leaves alone; a task without a
    // due date gets `today`.
    void fill(TodoRecord& record, const CalDate& today) const;

    // Changes only when a mapped field changes; "no due date" is part of it, today's date is not.
    std::uint64_t digest() const;
};

#endif
