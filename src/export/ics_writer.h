// The iCalendar export (RFC 5545): one VCALENDAR with a VTODO per to-do, text escaped, lines
// folded at 75 octets and ended with CRLF.
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

// A TEXT value with backslash, semicolon, comma and line breaks escaped; other control
// characters but tab are dropped, since iCalendar text may not hold them.
std::string escapeText(const std::string& text);

// Writes one content line, folded so that no line exceeds 75 octets and no UTF-8 sequence is
// split, each line ended with CRLF.
void writeFolded(std::ostream& out, const std::string& line);

// The UID's hash: FNV-1a over the position and every field, so the same record at the same
// place keeps its UID from one export to the next.
std::uint64_t recordHash(int position, const TodoRecord& record);

} // namespace IcsWriter

#endif
