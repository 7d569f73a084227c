// Due to-dos picked with the window's own overdue test and order.
#include "due_list.h"

#include "cal_date.h"
#include "todo_order.h"
#include "todo_store.h"
#include "utf8_text.h"

#include <cstring>

namespace DueList {

namespace {

DueTodo dueTodo(const TodoRecord& record, bool overdue) {
    char date[256];
    CalDate::format(record.month, record.day, record.year, date);
    // A full-length description runs on into the notes; it ends at its field here.
    std::size_t length = strnlen(record.description, sizeof record.description);
    return {date, Utf8Text::fromBytes(record.description, length), overdue};
}

} // namespace

std::vector<DueTodo> collect(const TodoStore& todos, int todayNumber) {
    std::vector<TodoOrder::Listed> listed;
    for (int i = 0; i < todos.count(); i++) {
        TodoRecord* record = todos.at(i);
        int dayNumber = TodoOrder::dayNumberOf(*record);
        TodoOrder::Form form = TodoOrder::formOf(*record, dayNumber, todayNumber);
        if (form != TodoOrder::Form::Completed && dayNumber <= todayNumber)
            listed.push_back({record, dayNumber, record->priority, form});
    }
    TodoOrder::sortForList(listed);
    std::vector<DueTodo> due;
    due.reserve(listed.size());
    for (const TodoOrder::Listed& l : listed)
        due.push_back(dueTodo(*l.record, l.form == TodoOrder::Form::Overdue));
    return due;
}

} // namespace DueList
