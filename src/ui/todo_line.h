// How one to-do appears as a line of the to-do list, and the order of the lines. Pure logic
// without widgets: the "@" codes are the browser's per-column format codes.
#ifndef PINDLE_TODO_LINE_H
#define PINDLE_TODO_LINE_H

#include <cstddef>
#include <vector>

struct TodoRecord;

namespace TodoLine {

constexpr std::size_t kLineSize = 256;

// The list's column widths, kept by the browser for the whole run: it splits a line into a
// column at each of its first four tabs, one per non-zero width.
inline constexpr int kColumnWidths[] = {20, 100, 100, 100, 0};
constexpr int kSplitTabs = sizeof kColumnWidths / sizeof kColumnWidths[0] - 1;

enum class Form { Plain, Completed, Overdue };

// Completed is tested first, so a completed to-do is never overdue.
Form formOf(const TodoRecord& record, int dayNumber, int todayNumber);

// Builds the four tab-separated columns into a buffer of kLineSize characters, cutting what
// does not fit (a description that runs on into the notes included). Format codes in the
// to-do's own text keep their effect where the browser reads them, unless they would break it.
void format(const TodoRecord& record, Form form, char* line);

int dayNumberOf(const TodoRecord& record);

// A to-do on its way into the list, with its sort keys beside it: sorting never has to reach
// into the records, which lie 32 KB apart.
struct Listed {
    TodoRecord* record;
    int dayNumber;
    int priority;
    Form form;
};

// Puts to-dos given in store order into list order: by day number, then priority, and among
// exact ties the one later in the store first. This is the order that placing each to-do in
// turn above the first listed one with a later-or-equal (day, priority) would give, in
// n log n instead of n squared.
void sortForList(std::vector<Listed>& listed);

} // namespace TodoLine

#endif
