// The to-do list's line texts and ordering.
#include "todo_line.h"

#include "browser_text.h"
#include "cal_date.h"
#include "field_codec.h"
#include "todo_store.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace TodoLine {

namespace {
// Each column repeats its own codes: the browser applies them per column. "@." ends the codes,
// so a completed or overdue line shows a leading "@" of its text literally, while a plain line
// lets the browser read it.
const char* codesFor(Form form) {
    switch (form) {
    case Form::Completed:
        return "@-@.";
    case Form::Overdue:
        return "@C1@.";
    case Form::Plain:
        break;
    }
    return "";
}

void append(char* line, const char* text) {
    FieldCodec::copyBounded(line + std::strlen(line), text, line + kLineSize);
}
} // namespace

Form formOf(const TodoRecord& record, int dayNumber, int todayNumber) {
    if (record.completed != 0)
        return Form::Completed;
    return dayNumber < todayNumber ? Form::Overdue : Form::Plain;
}

void format(const TodoRecord& record, Form form, char* line) {
    const char* codes = codesFor(form);
    // A damaged file may hold any priority; widen it so that adding one cannot overflow.
    long long shownPriority = static_cast<long long>(record.priority) + 1;
    std::snprintf(line, kLineSize, "%s%lld\t%s%d/%d/%d\t%s", codes, shownPriority, codes,
                  record.month, record.day, record.year, codes);
    BrowserText::append(line, kLineSize, record.category, *codes == '\0');
    append(line, "\t");
    append(line, codes);
    BrowserText::append(line, kLineSize, record.description, *codes == '\0');
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
