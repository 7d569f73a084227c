// Mapping a VTODO onto a to-do's fields.
#include "server_todo.h"

#include "cal_date.h"
#include "fnv_hash.h"
#include "ical_text.h"
#include "utf8_text.h"

#include <cstring>
#include <libical/ical.h>
#include <memory>

namespace {

using Component = std::unique_ptr<icalcomponent, decltype(&icalcomponent_free)>;

// One line of the list: a tab would split its columns and a line break its row.
std::string oneLine(std::string text) {
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            c = ' ';
    }
    return text;
}

std::string textOf(icalcomponent* vtodo, icalproperty_kind kind) {
    icalproperty* p = icalcomponent_get_first_property(vtodo, kind);
    icalvalue* value = p != nullptr ? icalproperty_get_value(p) : nullptr;
    // A value of another kind has no text to read: its union holds something else.
    if (value == nullptr || icalvalue_isa(value) != ICAL_TEXT_VALUE)
        return "";
    const char* text = icalvalue_get_text(value);
    return text != nullptr ? text : "";
}

// PRIORITY 0 is "undefined" (RFC 5545 3.8.1.9), as are values the list cannot show.
void readPriority(icalcomponent* vtodo, ServerTodo& out) {
    icalproperty* p = icalcomponent_get_first_property(vtodo, ICAL_PRIORITY_PROPERTY);
    if (p == nullptr || icalvalue_isa(icalproperty_get_value(p)) != ICAL_INTEGER_VALUE)
        return;
    int value = icalproperty_get_priority(p);
    if (value < 1 || value > 9)
        return;
    out.hasPriority = true;
    out.priority = value;
}

// A DUE with a time keeps the date it is written with; its time of day has no field here.
// libical takes any digits for a date, so a day the calendar lacks is refused here.
void readDue(icalcomponent* vtodo, ServerTodo& out) {
    icalproperty* p = icalcomponent_get_first_property(vtodo, ICAL_DUE_PROPERTY);
    if (p == nullptr)
        return;
    icaltimetype due = icalproperty_get_due(p);
    if (icaltime_is_null_time(due) || !icaltime_is_valid_time(due) ||
        !CalDate::isCalendarDate(due.month, due.day, due.year))
        return;
    out.hasDue = true;
    out.year = due.year;
    out.month = due.month;
    out.day = due.day;
}

bool isCompleted(icalcomponent* vtodo) {
    icalproperty* p = icalcomponent_get_first_property(vtodo, ICAL_STATUS_PROPERTY);
    return p != nullptr && icalvalue_isa(icalproperty_get_value(p)) == ICAL_STATUS_VALUE &&
           icalproperty_get_status(p) == ICAL_STATUS_COMPLETED;
}

void read(icalcomponent* vtodo, ServerTodo& out) {
    out.uid = textOf(vtodo, ICAL_UID_PROPERTY);
    out.summary =
        Utf8Text::fit(oneLine(textOf(vtodo, ICAL_SUMMARY_PROPERTY)), ServerTodo::kLineBytes);
    out.notes = Utf8Text::fit(textOf(vtodo, ICAL_DESCRIPTION_PROPERTY), TodoRecord::kNotesMax);
    out.category =
        Utf8Text::fit(oneLine(textOf(vtodo, ICAL_CATEGORIES_PROPERTY)), ServerTodo::kLineBytes);
    if (out.category.empty())
        out.category = ServerTodo::kDefaultCategory;
    readPriority(vtodo, out);
    out.completed = isCompleted(vtodo);
    readDue(vtodo, out);
}

template <std::size_t N> std::string fieldText(const char (&field)[N]) {
    return std::string(field, strnlen(field, N));
}

} // namespace

bool ServerTodo::parse(const std::string& ics, ServerTodo& out) {
    Component root(IcalText::parse(ics), &icalcomponent_free);
    if (!root)
        return false;
    icalcomponent* vtodo =
        icalcomponent_isa(root.get()) == ICAL_VTODO_COMPONENT
            ? root.get()
            : icalcomponent_get_first_component(root.get(), ICAL_VTODO_COMPONENT);
    if (vtodo == nullptr)
        return false;
    out = ServerTodo();
    read(vtodo, out);
    return true;
}

void ServerTodo::fill(TodoRecord& record, const CalDate& today, TodoField::Set fields) const {
    using namespace TodoField;
    if (fields[Date]) {
        record.month = hasDue ? month : today.month;
        record.day = hasDue ? day : today.day;
        record.year = hasDue ? year : today.year;
    }
    if (fields[Priority])
        record.priority = priority - 1;
    if (fields[Completed])
        record.completed = completed ? 1 : 0;
    if (!fields[Category] && !fields[Description] && !fields[Notes])
        return;
    // The texts lie back to back, and a 50-byte category or summary has its terminator in the
    // next field: each is written in the entry dialog's order, those not taken from the task
    // written again as they were, so that every field ends as its own copy leaves it.
    const std::string kept[] = {fields[Category] ? "" : fieldText(record.category),
                                fields[Description] ? "" : fieldText(record.description),
                                fields[Notes] ? "" : std::string(record.notes())};
    record.setCategory(fields[Category] ? category.c_str() : kept[0].c_str());
    record.setDescription(fields[Description] ? summary.c_str() : kept[1].c_str());
    record.setNotes(fields[Notes] ? notes.c_str() : kept[2].c_str());
}

std::array<std::uint32_t, TodoField::kCount> ServerTodo::fieldDigests() const {
    using namespace TodoField;
    std::array<std::uint32_t, kCount> out{};
    out[Date] = hasDue ? FnvHash::digest({year, month, day}) : FnvHash::digest({-1});
    out[Priority] = FnvHash::digest({hasPriority ? priority : -1});
    out[Completed] = FnvHash::digest({completed ? 1 : 0});
    out[Category] = FnvHash::digest(category);
    out[Description] = FnvHash::digest(summary);
    out[Notes] = FnvHash::digest(notes);
    return out;
}
