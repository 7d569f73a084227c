// The list's order and the overdue test.
#include "todo_order.h"

#include "cal_date.h"
#include "todo_store.h"

#include <algorithm>

namespace TodoOrder {

Form formOf(const TodoRecord& record, int dayNumber, int todayNumber) {
    if (record.completed != 0)
        return Form::Completed;
    return dayNumber < todayNumber ? Form::Overdue : Form::Plain;
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

} // namespace TodoOrder
