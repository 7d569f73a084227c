// Building a task's iCalendar with libical.
#include "task_writer.h"

#include "ical_text.h"
#include "vtodo_fields.h"

#include <cstdio>
#include <libical/ical.h>
#include <random>

namespace TaskWriter {

namespace {

const char* const kProdid = "-//Pindle ToDo//pindle_sync//EN";

// The server's VCALENDAR when it holds a VTODO, else null.
icalcomponent* serverCalendar(const std::string& ics, icalcomponent*& vtodo) {
    if (ics.empty())
        return nullptr;
    icalcomponent* root = IcalText::parse(ics);
    if (root == nullptr)
        return nullptr;
    if (icalcomponent_isa(root) == ICAL_VCALENDAR_COMPONENT)
        vtodo = icalcomponent_get_first_component(root, ICAL_VTODO_COMPONENT);
    if (vtodo == nullptr) {
        icalcomponent_free(root);
        return nullptr;
    }
    return root;
}

void stamp(icalcomponent* vtodo, icalproperty_kind kind, std::time_t now) {
    icaltimetype utc = icaltime_from_timet_with_zone(now, 0, icaltimezone_get_utc_timezone());
    icalproperty* p = icalproperty_new(kind);
    icalproperty_set_value(p, icalvalue_new_datetime(utc));
    VtodoFields::replace(vtodo, p);
}

} // namespace

std::string build(const TodoRecord& record, const std::string& uid, const std::string& serverIcs,
                  std::time_t now, TodoField::Set fields) {
    icalcomponent* vtodo = nullptr;
    icalcomponent* calendar = serverCalendar(serverIcs, vtodo);
    if (calendar == nullptr) {
        calendar = VtodoFields::newCalendar(kProdid);
        vtodo = icalcomponent_new(ICAL_VTODO_COMPONENT);
        icalcomponent_add_property(vtodo, icalproperty_new_uid(uid.c_str()));
        icalcomponent_add_component(calendar, vtodo);
        fields = TodoField::all();
    }
    stamp(vtodo, ICAL_DTSTAMP_PROPERTY, now);
    stamp(vtodo, ICAL_LASTMODIFIED_PROPERTY, now);
    VtodoFields::set(vtodo, TodoView(record), fields);
    std::string text = IcalText::write(calendar);
    icalcomponent_free(calendar);
    return text;
}

std::string newUid() {
    std::random_device random;
    char text[40];
    std::snprintf(text, sizeof text, "pindle-%08x%08x%08x%08x", random(), random(), random(),
                  random());
    return text;
}

} // namespace TaskWriter
