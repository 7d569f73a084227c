// The to-do list's line texts and ordering.
#include "todo_line.h"

#include "cal_date.h"
#include "field_codec.h"
#include "todo_store.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace TodoLine {

namespace {
// Each column repeats its own codes: the browser applies them per column. "@." ends the codes,
// so a completed or overdue line shows a leading "@" of its text literally; a plain line does not.
struct Codes {
    const char* columns;
    const char* beforeDescription;
};

Codes codesFor(Form form) {
    switch (form) {
    case Form::Completed:
        return {"@-@.%lld\t@-@.%d/%d/%d\t@-@.%s\t", "@-@."};
    case Form::Overdue:
        return {"@C1@.%lld\t@C1@.%d/%d/%d\t@C1@.%s\t", "@C1@."};
    case Form::Plain:
        break;
    }
    return {"%lld\t%d/%d/%d\t%s\t", ""};
}
} // namespace

Form formOf(const TodoRecord& record, int dayNumber, int todayNumber) {
    if (record.completed != 0)
        return Form::Completed;
    return dayNumber < todayNumber ? Form::Overdue : Form::Plain;
}

void format(const TodoRecord& record, Form form, char* line) {
    Codes codes = codesFor(form);
    // A damaged file may hold any priority; widen it so that adding one cannot overflow.
    long long shownPriority = static_cast<long long>(record.priority) + 1;
    std::snprintf(line, kLineSize, codes.columns, shownPriority, record.month, record.day,
                  record.year, record.category);
    const char* end = line + kLineSize;
    FieldCodec::copyBounded(line + std::strlen(line), codes.beforeDescription, end);
    FieldCodec::copyBounded(line + std::strlen(line), record.description, end);
}

int dayNumberOf(const TodoRecord& record) {
    return CalDate::dayNumber(record.month, record.day, record.year);
}

void sortForList(std::vector<Listed>& listed) {
    std::reverse(listed.begin(), listed.end());
    std::stable_sort(listed.begin(), listed.end(), [](const Listed& a, const Listed& b) {
        if (a.dayNumber != b.dayNumber)
            return a.dayNumber < b.dayNumber;
        return a.record->priority < b.record->priority;
    });
}

} // namespace TodoLine
