// The to-do list's line texts and ordering.
#include "todo_line.h"

#include "cal_date.h"
#include "field_codec.h"
#include "todo_store.h"

#include <cstdio>
#include <cstring>

namespace TodoLine {

namespace {
// Each column repeats its own codes: the browser applies them per column. "@." ends the codes,
// so a completed or overdue line shows a leading "@" of its text literally.
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

void appendText(char* line, const char* text, bool columnStart) {
    char* out = line + std::strlen(line);
    const char* end = line + kLineSize - 1;
    for (; *text != '\0' && out < end; text++) {
        // "@." stops the browser reading codes where a column would begin with this "@".
        if (*text == '@' && columnStart) {
            if (end - out < 3)
                break;
            *out++ = '@';
            *out++ = '.';
        }
        columnStart = *text == '\t';
        *out++ = *text;
    }
    *out = '\0';
}

Form formOf(const TodoRecord& record, int todayNumber) {
    if (record.completed != 0)
        return Form::Completed;
    return dayNumberOf(record) < todayNumber ? Form::Overdue : Form::Plain;
}

void format(const TodoRecord& record, Form form, char* line) {
    const char* codes = codesFor(form);
    // A damaged file may hold any priority; widen it so that adding one cannot overflow.
    long long shownPriority = static_cast<long long>(record.priority) + 1;
    std::snprintf(line, kLineSize, "%s%lld\t%s%d/%d/%d\t%s", codes, shownPriority, codes,
                  record.month, record.day, record.year, codes);
    appendText(line, record.category, *codes == '\0');
    append(line, "\t");
    append(line, codes);
    appendText(line, record.description, *codes == '\0');
}

int dayNumberOf(const TodoRecord& record) {
    return CalDate::dayNumber(record.month, record.day, record.year);
}

bool goesBefore(const TodoRecord& record, const TodoRecord& listed) {
    int mine = dayNumberOf(record);
    int theirs = dayNumberOf(listed);
    return mine < theirs || (mine == theirs && record.priority <= listed.priority);
}

} // namespace TodoLine
