// The to-do list's order and which to-dos are overdue, for everything that lists to-dos: the
// window draws them this way and the reminders announce them in the same order. Pure logic on
// records and day numbers, no widgets.
#ifndef PINDLE_TODO_ORDER_H
#define PINDLE_TODO_ORDER_H

#include <vector>

struct TodoRecord;

namespace TodoOrder {

enum class Form { Plain, Completed, Overdue };

// Completed is tested first, so a completed to-do is never overdue.
Form formOf(const TodoRecord& record, int dayNumber, int todayNumber);

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

} // namespace TodoOrder

#endif
