// The to-do list's line texts and ordering.
#include "todo_line.h"

#include "browser_text.h"
#include "cal_date.h"
#include "field_codec.h"
#include "todo_store.h"

#include <algorithm>
#include <charconv>
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

// Copies `text` to `out` without its terminator; returns the end of the copy.
char* put(char* out, const char* text) {
    std::size_t length = std::strlen(text);
    std::memcpy(out, text, length);
    return out + length;
}

// Writes `number` in decimal, as "%lld" does; 20 characters at most.
char* putNumber(char* out, long long number) {
    return std::to_chars(out, out + 20, number).ptr;
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

// Built by hand rather than with snprintf, which took half of a list rebuild. The part before
// the category is at most 69 characters, so it always fits.
void format(const TodoRecord& record, Form form, char* line) {
    const char* codes = codesFor(form);
    // A damaged file may hold any priority; widen it so that adding one cannot overflow.
    long long shownPriority = static_cast<long long>(record.priority) + 1;
    char* out = put(line, codes);
    out = putNumber(out, shownPriority);
    *out++ = '\t';
    out = put(out, codes);
    out = putNumber(out, record.month);
    *out++ = '/';
    out = putNumber(out, record.day);
    *out++ = '/';
    out = putNumber(out, record.year);
    *out++ = '\t';
    out = put(out, codes);
    *out = '\0';
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
        return a.priority < b.priority;
    });
}

} // namespace TodoLine
