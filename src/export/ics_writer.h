// The iCalendar side of a to-do (RFC 5545), built with libical: the VTODO fields that both the
// export and the sync write, and the export's VCALENDAR of every to-do. libical does the
// escaping and the folding of lines at 75 octets.
#ifndef PINDLE_ICS_WRITER_H
#define PINDLE_ICS_WRITER_H

#include "todo_store.h"
#include "todo_view.h"

#include <cstdint>
#include <ctime>
#include <libical/ical.h>
#include <ostream>
#include <string>

namespace IcsWriter {

// Writes the calendar; every VTODO gets `stamp` (seconds since the epoch, UTC) as DTSTAMP.
void write(std::ostream& out, const TodoRecord* head, std::time_t stamp);

// Puts the to-do's SUMMARY, DESCRIPTION, DUE, PRIORITY, STATUS and first CATEGORIES on
// `vtodo`, replacing those it has; everything else it carries (further categories, alarms, a
// start date) stays. A field the to-do lacks is removed.
void setFields(icalcomponent* vtodo, const TodoView& todo);

// A VCALENDAR of VERSION and PRODID, holding nothing yet.
icalcomponent* newCalendar(const char* prodid);

// The time for DTSTAMP: SOURCE_DATE_EPOCH's value when one is given (so that output can be
// reproduced), else `now`. False when the value is not a number of seconds in years 1970-9999.
bool chooseStamp(const char* sourceDateEpoch, std::time_t now, std::time_t& stamp);

// Text as iCalendar may hold it: line breaks made LF, other control characters but tab
// dropped. Escaping is libical's.
std::string cleanText(const std::string& text);

// The UID's hash: FNV-1a over the position and every field, so the same record at the same
// place keeps its UID from one export to the next.
std::uint64_t recordHash(int position, const TodoRecord& record);

} // namespace IcsWriter

#endif
