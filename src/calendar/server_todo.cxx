// Mapping a VTODO onto a to-do's fields.
#include "server_todo.h"

#include "cal_date.h"
#include "fnv_hash.h"
#include "ical_text.h"
#include "utf8_text.h"

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

int priorityOf(icalcomponent* vtodo) {
    icalproperty* p = icalcomponent_get_first_property(vtodo, ICAL_PRIORITY_PROPERTY);
    if (p == nullptr || icalvalue_isa(icalproperty_get_value(p)) != ICAL_INTEGER_VALUE)
        return ServerTodo::kDefaultPriority;
    int value = icalproperty_get_priority(p);
    return value >= 1 && value <= 9 ? value : ServerTodo::kDefaultPriority;
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
    out.priority = priorityOf(vtodo);
    out.completed = isCompleted(vtodo);
    readDue(vtodo, out);
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

void ServerTodo::fill(TodoRecord& record, const CalDate& today) const {
    record.month = hasDue ? month : today.month;
    record.day = hasDue ? day : today.day;
    record.year = hasDue ? year : today.year;
    record.priority = priority - 1;
    record.completed = completed ? 1 : 0;
    // In the order the entry dialog fills them: a 50-byte category or summary has its
    // terminator in the next field, which the next copy then writes over.
    record.setCategory(category.c_str());
    record.setDescription(summary.c_str());
    record.setNotes(notes.c_str());
}

std::uint64_t ServerTodo::digest() const {
    FnvHash hash;
    hash.addText(summary);
    hash.addText(notes);
    hash.addText(category);
    hash.addInt(hasDue ? year : -1);
    hash.addInt(hasDue ? month : -1);
    hash.addInt(hasDue ? day : -1);
    hash.addInt(priority);
    hash.addInt(completed ? 1 : 0);
    return hash.value();
}
