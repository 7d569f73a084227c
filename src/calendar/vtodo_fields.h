// A to-do's fields on a VTODO (RFC 5545), set with libical: the one way both the export and the
// sync write a to-do as iCalendar. Escaping and folding are the writer's (ical_text).
#ifndef PINDLE_VTODO_FIELDS_H
#define PINDLE_VTODO_FIELDS_H

#include "todo_field.h"
#include "todo_view.h"

#include <libical/ical.h>
#include <string>

namespace VtodoFields {

// Puts the to-do's `fields` on `vtodo` (SUMMARY, DESCRIPTION, DUE, PRIORITY, STATUS and the
// first CATEGORIES), replacing what it has for them; everything else it carries (the other
// fields, further categories, alarms, a start date) stays. A field the to-do lacks is removed.
void set(icalcomponent* vtodo, const TodoView& todo, TodoField::Set fields = TodoField::all());

// Puts `property` on `vtodo` in place of every property of its kind there; `vtodo` owns it.
void replace(icalcomponent* vtodo, icalproperty* property);

// A VCALENDAR of VERSION and PRODID, holding nothing yet.
icalcomponent* newCalendar(const char* prodid);

// Text as iCalendar may hold it: line breaks made LF, other control characters but tab
// dropped (RFC 5545 3.3.11 has no place for them).
std::string cleanText(const std::string& text);

} // namespace VtodoFields

#endif
