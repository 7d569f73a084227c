// iCalendar text as both companions read and write it: libical's parser and writer, with the
// texts a to-do is made of kept exact both ways. libical 3.0 trims the spaces and tabs at both
// ends of every value it reads, splits CATEGORIES wrongly next to escaped commas and
// backslashes, and writes the commas and semicolons of a CATEGORIES value bare, so that a
// category name holding one reads as several (RFC 5545 3.3.11 wants them escaped). Here the
// values of SUMMARY, DESCRIPTION and CATEGORIES are taken apart by RFC 5545 before libical
// parses the rest, and each CATEGORIES line libical writes is escaped and folded again.
#ifndef PINDLE_ICAL_TEXT_H
#define PINDLE_ICAL_TEXT_H

#include <libical/ical.h>
#include <string>

namespace IcalText {

// The component `ics` holds, as icalparser_parse_string() reads it, but with the exact texts of
// every SUMMARY, DESCRIPTION and CATEGORIES value (one CATEGORIES property per category, as
// libical keeps them). Null when nothing could be read; the caller frees the result.
icalcomponent* parse(const std::string& ics);

// `component` as icalcomponent_as_ical_string_r() writes it, each CATEGORIES property written
// as the one category name it holds: commas and semicolons escaped, lines folded at 75 octets
// between two characters.
std::string write(icalcomponent* component);

} // namespace IcalText

#endif
