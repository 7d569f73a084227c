// Reading a to-do record for export without running past its fields.
#include "todo_view.h"

#include "cal_date.h"
#include "utf8_text.h"

#include <cstdio>
#include <cstring>

namespace {

// A full-length category or description has no terminator of its own (it sits in the next
// field), so the field size is the hard limit.
template <std::size_t N> std::string fieldText(const char (&field)[N]) {
    return Utf8Text::fromBytes(field, strnlen(field, N));
}

} // namespace

TodoView::TodoView(const TodoRecord& record)
    : record_(record), category_(fieldText(record.category)),
      description_(fieldText(record.description)),
      notes_(Utf8Text::fromBytes(record.notes(), std::strlen(record.notes()))) {}

bool TodoView::hasDate() const {
    return CalDate::isCalendarDate(record_.month, record_.day, record_.year);
}

std::string TodoView::isoDate() const {
    if (!hasDate())
        return {};
    char text[16];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", record_.year, record_.month, record_.day);
    return text;
}
