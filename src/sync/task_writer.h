// The iCalendar a to-do goes up as: the server's own copy of the task with the to-do's fields
// put on it when there is one, so that what this program does not know of the task survives,
// else a new VCALENDAR. The fields are set by the calendar mapping, the one iCalendar path.
#ifndef PINDLE_TASK_WRITER_H
#define PINDLE_TASK_WRITER_H

#include "todo_field.h"
#include "todo_store.h"

#include <ctime>
#include <string>

namespace TaskWriter {

// `fields` of the record put on `serverIcs`, the server's copy. It may be empty or unreadable;
// the task then starts afresh with `uid` and every field.
std::string build(const TodoRecord& record, const std::string& uid, const std::string& serverIcs,
                  std::time_t now, TodoField::Set fields = TodoField::all());

// A new UID: 128 random bits.
std::string newUid();

} // namespace TaskWriter

#endif
