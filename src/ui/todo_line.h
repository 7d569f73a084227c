// How one to-do appears as a line of the to-do list, and the order of the lines. Pure logic
// without widgets: the "@" codes are the browser's per-column format codes.
#ifndef PINDLE_TODO_LINE_H
#define PINDLE_TODO_LINE_H

#include <cstddef>

struct TodoRecord;

namespace TodoLine {

constexpr std::size_t kLineSize = 256;

enum class Form { Plain, Completed, Overdue };

// Completed is tested first, so a completed to-do is never overdue.
Form formOf(const TodoRecord& record, int todayNumber);

// Builds the four tab-separated columns into a buffer of kLineSize characters, cutting what
// does not fit (a description that runs on into the notes included).
void format(const TodoRecord& record, Form form, char* line);

// Appends user text to a browser line of kLineSize characters, cutting what does not fit.
// Format codes in it are never obeyed (some, such as huge sizes or unknown fonts, end the
// program): "@." goes before an "@" that starts the text, when `columnStart`, or follows a tab.
void appendText(char* line, const char* text, bool columnStart);

int dayNumberOf(const TodoRecord& record);

// True when `record` goes above `listed`: an earlier date, or the same date and a priority
// that is not higher. Exact ties therefore list the later-placed record first.
bool goesBefore(const TodoRecord& record, const TodoRecord& listed);

} // namespace TodoLine

#endif
