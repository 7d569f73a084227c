// A task as the server holds it, read from its iCalendar with libical and mapped onto the
// fields of a to-do record: texts made valid UTF-8 and cut to their fields at a character
// boundary, the priority and date given their defaults.
#ifndef PINDLE_SERVER_TODO_H
#define PINDLE_SERVER_TODO_H

#include "cal_date.h"
#include "todo_field.h"
#include "todo_store.h"

#include <array>
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
    bool hasPriority = false;
    int priority = kDefaultPriority; // 1-9 as the list shows it
    bool completed = false;

    // Reads the first VTODO of an iCalendar object. False when there is none, or it cannot be
    // read at all; missing properties get their defaults.
    static bool parse(const std::string& ics, ServerTodo& out);

    // Writes `fields` into `record`, whose other fields and bytes it leaves alone; a task
    // without a due date gets `today`.
    void fill(TodoRecord& record, const CalDate& today,
              TodoField::Set fields = TodoField::all()) const;

    // One digest per field, in TodoField's order, of the task's own values: "no due date" and
    // "no priority" are values of their own, so that today's date or the default priority a
    // fill gives never counts as a change of the task.
    std::array<std::uint32_t, TodoField::kCount> fieldDigests() const;
};

#endif
