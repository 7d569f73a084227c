// The VTODO fields and the export's VCALENDAR.
#include "ics_writer.h"

#include "fnv_hash.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace IcsWriter {

namespace {

// 9999-12-31T23:59:59Z: DTSTAMP has room for four digits of year only.
constexpr long long kLastStamp = 253402300799LL;

std::string uid(int position, const TodoRecord& record) {
    char text[48];
    std::snprintf(text, sizeof text, "%016llx@pindle_todo",
                  static_cast<unsigned long long>(recordHash(position, record)));
    return text;
}

void removeAll(icalcomponent* vtodo, icalproperty_kind kind) {
    while (icalproperty* p = icalcomponent_get_first_property(vtodo, kind)) {
        icalcomponent_remove_property(vtodo, p);
        icalproperty_free(p);
    }
}

void replace(icalcomponent* vtodo, icalproperty* property) {
    removeAll(vtodo, icalproperty_isa(property));
    icalcomponent_add_property(vtodo, property);
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

icaltimetype utcTime(std::time_t stamp) {
    return icaltime_from_timet_with_zone(stamp, 0, icaltimezone_get_utc_timezone());
}

} // namespace

void setFields(icalcomponent* vtodo, const TodoView& todo) {
    replace(vtodo, icalproperty_new_summary(cleanText(todo.description()).c_str()));
    removeAll(vtodo, ICAL_DESCRIPTION_PROPERTY);
    if (!todo.notes().empty())
        icalcomponent_add_property(vtodo,
                                   icalproperty_new_description(cleanText(todo.notes()).c_str()));
    removeAll(vtodo, ICAL_DUE_PROPERTY);
    if (todo.hasDate())
        icalcomponent_add_property(vtodo, icalproperty_new_due(dateOf(todo.record())));
    // PRIORITY 1-9 runs from highest to lowest, as the list's numbers do; 0 would mean "none".
    removeAll(vtodo, ICAL_PRIORITY_PROPERTY);
    if (todo.priority() >= 1 && todo.priority() <= 9)
        icalcomponent_add_property(vtodo,
                                   icalproperty_new_priority(static_cast<int>(todo.priority())));
    setStatus(vtodo, todo.completed());
    setCategory(vtodo, cleanText(todo.category()));
}

icalcomponent* newCalendar(const char* prodid) {
    icalcomponent* calendar = icalcomponent_new(ICAL_VCALENDAR_COMPONENT);
    icalcomponent_add_property(calendar, icalproperty_new_version("2.0"));
    icalcomponent_add_property(calendar, icalproperty_new_prodid(prodid));
    return calendar;
}

bool chooseStamp(const char* sourceDateEpoch, std::time_t now, std::time_t& stamp) {
    if (sourceDateEpoch == nullptr) {
        stamp = now;
        return true;
    }
    if (*sourceDateEpoch < '0' || *sourceDateEpoch > '9')
        return false;
    char* end = nullptr;
    errno = 0;
    long long seconds = std::strtoll(sourceDateEpoch, &end, 10);
    if (errno != 0 || *end != '\0' || seconds > kLastStamp)
        return false;
    stamp = static_cast<std::time_t>(seconds);
    return true;
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

std::uint64_t recordHash(int position, const TodoRecord& record) {
    TodoView view(record);
    FnvHash hash;
    hash.addInt(position);
    hash.addInt(record.month);
    hash.addInt(record.day);
    hash.addInt(record.year);
    hash.addInt(record.priority);
    hash.addInt(record.completed);
    hash.addText(view.category());
    hash.addText(view.description());
    hash.addText(view.notes());
    return hash.value();
}

void write(std::ostream& out, const TodoRecord* head, std::time_t stamp) {
    icalcomponent* calendar = newCalendar("-//Pindle ToDo//pindle_export//EN");
    int position = 0;
    for (const TodoRecord* r = head; r != nullptr; r = r->next) {
        icalcomponent* vtodo = icalcomponent_new(ICAL_VTODO_COMPONENT);
        icalcomponent_add_property(vtodo, icalproperty_new_uid(uid(position++, *r).c_str()));
        icalcomponent_add_property(vtodo, icalproperty_new_dtstamp(utcTime(stamp)));
        setFields(vtodo, TodoView(*r));
        icalcomponent_add_component(calendar, vtodo);
    }
    std::unique_ptr<char, decltype(&std::free)> text(icalcomponent_as_ical_string_r(calendar),
                                                     &std::free);
    out << text.get();
    icalcomponent_free(calendar);
}

} // namespace IcsWriter
