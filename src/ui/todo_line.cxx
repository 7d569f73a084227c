// The to-do list's line texts.
#include "todo_line.h"

#include "browser_text.h"
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

// Writes a line from its start, never past its last character, which keeps the terminator.
struct LineWriter {
    char* at;
    char* last;

    void put(const char* text, std::size_t length) {
        length = std::min(length, static_cast<std::size_t>(last - at));
        std::memcpy(at, text, length);
        at += length;
    }
    void put(const char* text) { put(text, strnlen(text, static_cast<std::size_t>(last - at))); }
    void put(char c) { put(&c, 1); }
    void putNumber(long long number) {
        char digits[20];
        put(digits,
            static_cast<std::size_t>(std::to_chars(digits, digits + 20, number).ptr - digits));
    }
};
} // namespace

// Built by hand rather than with snprintf, which took half of a list rebuild.
void format(const TodoRecord& record, Form form, char* line) {
    const char* codes = codesFor(form);
    LineWriter out{line, line + kLineSize - 1};
    out.put(codes);
    // A damaged file may hold any priority; widen it so that adding one cannot overflow.
    out.putNumber(static_cast<long long>(record.priority) + 1);
    out.put('\t');
    out.put(codes);
    out.putNumber(record.month);
    out.put('/');
    out.putNumber(record.day);
    out.put('/');
    out.putNumber(record.year);
    out.put('\t');
    out.put(codes);
    out.put(record.category);
    out.put('\t');
    out.put(codes);
    out.put(record.description);
    *out.at = '\0';
    BrowserText::guard(line, kLineSize, kSplitTabs);
}

} // namespace TodoLine
