// Setting a to-do's fields on a VTODO.
#include "vtodo_fields.h"

namespace VtodoFields {

namespace {

void removeAll(icalcomponent* vtodo, icalproperty_kind kind) {
    while (icalproperty* p = icalcomponent_get_first_property(vtodo, kind)) {
        icalcomponent_remove_property(vtodo, p);
        icalproperty_free(p);
    }
}

icaltimetype dateOf(const TodoRecord& r) {
    icaltimetype date = icaltime_null_date();
    date.year = r.year;
    date.month = r.month;
    date.day = r.day;
    return date;
}

void setCategory(icalcomponent* vtodo, const std::string& category) {
    icalproperty* first = icalcomponent_get_first_property(vtodo, ICAL_CATEGORIES_PROPERTY);
    if (first != nullptr && category.empty()) {
        icalcomponent_remove_property(vtodo, first);
        icalproperty_free(first);
    } else if (first != nullptr) {
        icalproperty_set_categories(first, category.c_str());
    } else if (!category.empty()) {
        icalcomponent_add_property(vtodo, icalproperty_new_categories(category.c_str()));
    }
}

// An open to-do loses what other clients take for done, so that they show it open too.
void setStatus(icalcomponent* vtodo, bool completed) {
    replace(vtodo,
            icalproperty_new_status(completed ? ICAL_STATUS_COMPLETED : ICAL_STATUS_NEEDSACTION));
    if (!completed) {
        removeAll(vtodo, ICAL_COMPLETED_PROPERTY);
        removeAll(vtodo, ICAL_PERCENTCOMPLETE_PROPERTY);
    }
}

} // namespace

void replace(icalcomponent* vtodo, icalproperty* property) {
    removeAll(vtodo, icalproperty_isa(property));
    icalcomponent_add_property(vtodo, property);
}

void set(icalcomponent* vtodo, const TodoView& todo, TodoField::Set fields) {
    using namespace TodoField;
    if (fields[Description])
        replace(vtodo, icalproperty_new_summary(cleanText(todo.description()).c_str()));
    if (fields[Notes]) {
        removeAll(vtodo, ICAL_DESCRIPTION_PROPERTY);
        if (!todo.notes().empty())
            icalcomponent_add_property(
                vtodo, icalproperty_new_description(cleanText(todo.notes()).c_str()));
    }
    if (fields[Date]) {
        removeAll(vtodo, ICAL_DUE_PROPERTY);
        if (todo.hasDate())
            icalcomponent_add_property(vtodo, icalproperty_new_due(dateOf(todo.record())));
    }
    // PRIORITY 1-9 runs from highest to lowest, as the list's numbers do; 0 would mean "none".
    if (fields[Priority]) {
        removeAll(vtodo, ICAL_PRIORITY_PROPERTY);
        if (todo.priority() >= 1 && todo.priority() <= 9)
            icalcomponent_add_property(
                vtodo, icalproperty_new_priority(static_cast<int>(todo.priority())));
    }
    if (fields[Completed])
        setStatus(vtodo, todo.completed());
    if (fields[Category])
        setCategory(vtodo, cleanText(todo.category()));
}

icalcomponent* newCalendar(const char* prodid) {
    icalcomponent* calendar = icalcomponent_new(ICAL_VCALENDAR_COMPONENT);
    icalcomponent_add_property(calendar, icalproperty_new_version("2.0"));
    icalcomponent_add_property(calendar, icalproperty_new_prodid(prodid));
    return calendar;
}

std::string cleanText(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); i++) {
        char c = text[i];
        if (c == '\r' || c == '\n') {
            // CR LF, a lone CR and a lone LF are all one line break.
            if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
                i++;
            out += '\n';
        } else if ((static_cast<unsigned char>(c) >= 0x20 && c != 0x7F) || c == '\t') {
            out += c;
        }
    }
    return out;
}

} // namespace VtodoFields
