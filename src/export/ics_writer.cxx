// The export's VCALENDAR of every to-do.
#include "ics_writer.h"

#include "fnv_hash.h"
#include "ical_text.h"
#include "todo_view.h"
#include "vtodo_fields.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

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

icaltimetype utcTime(std::time_t stamp) {
    return icaltime_from_timet_with_zone(stamp, 0, icaltimezone_get_utc_timezone());
}

} // namespace

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
    icalcomponent* calendar = VtodoFields::newCalendar("-//Pindle ToDo//pindle_export//EN");
    int position = 0;
    for (const TodoRecord* r = head; r != nullptr; r = r->next) {
        icalcomponent* vtodo = icalcomponent_new(ICAL_VTODO_COMPONENT);
        icalcomponent_add_property(vtodo, icalproperty_new_uid(uid(position++, *r).c_str()));
        icalcomponent_add_property(vtodo, icalproperty_new_dtstamp(utcTime(stamp)));
        VtodoFields::set(vtodo, TodoView(*r));
        icalcomponent_add_component(calendar, vtodo);
    }
    out << IcalText::write(calendar);
    icalcomponent_free(calendar);
}

} // namespace IcsWriter
