// The export's iCalendar (RFC 5545): a VCALENDAR with a VTODO of every to-do, each with a UID
// that stays the same from one export to the next and the fields the calendar mapping sets.
#ifndef PINDLE_ICS_WRITER_H
#define PINDLE_ICS_WRITER_H

#include "todo_store.h"

#include <cstdint>
#include <ctime>
#include <ostream>
#include <string>

namespace IcsWriter {

// Writes the calendar; every VTODO gets `stamp` (seconds since the epoch, UTC) as DTSTAMP.
void write(std::ostream& out, const TodoRecord* head, std::time_t stamp);

// The time for DTSTAMP: SOURCE_DATE_EPOCH's value when one is given (so that output can be
// reproduced), else `now`. False when the value is not a number of seconds in years 1970-9999.
bool chooseStamp(const char* sourceDateEpoch, std::time_t now, std::time_t& stamp);

// The UID's hash: FNV-1a over the position and every field, so the same record at the same
// place keeps its UID from one export to the next.
std::uint64_t recordHash(int position, const TodoRecord& record);

} // namespace IcsWriter

#endif
