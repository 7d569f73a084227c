// How one to-do appears as a line of the to-do list. Pure logic without widgets: the "@" codes
// are the browser's per-column format codes.
#ifndef PINDLE_TODO_LINE_H
#define PINDLE_TODO_LINE_H

#include "todo_order.h"

#include <cstddef>

struct TodoRecord;

namespace TodoLine {

constexpr std::size_t kLineSize = 256;

// The list's column widths, kept by the browser for the whole run: it splits a line into a
// column at each of its first four tabs, one per non-zero width.
inline constexpr int kColumnWidths[] = {20, 100, 100, 100, 0};
constexpr int kSplitTabs = sizeof kColumnWidths / sizeof kColumnWidths[0] - 1;

// The order and the forms are shared with the reminders, so they live below both.
using TodoOrder::dayNumberOf;
using TodoOrder::Form;
using TodoOrder::formOf;
using TodoOrder::Listed;
using TodoOrder::sortForList;

// Builds the four tab-separated columns into a buffer of kLineSize characters, cutting what
// does not fit (a description that runs on into the notes included). Format codes in the
// to-do's own text keep their effect where the browser reads them, unless they would break it.
void format(const TodoRecord& record, Form form, char* line);

} // namespace TodoLine

#endif
