// One to-do as the export formats see it: text cut at its field and made valid UTF-8, the date
// in ISO 8601 when it is a real one, and the priority as the list shows it.
#ifndef PINDLE_TODO_VIEW_H
#define PINDLE_TODO_VIEW_H

#include "todo_store.h"

#include <string>

class TodoView {
public:
    explicit TodoView(const TodoRecord& record);

    const std::string& category() const { return category_; }
    const std::string& description() const { return description_; }
    const std::string& notes() const { return notes_; }

    // A date with a month of 1-12, a day inside that month and a year of 1-9999; anything else
    // (a damaged file) has no ISO form.
    bool hasDate() const;
    // "YYYY-MM-DD", or empty without a date.
    std::string isoDate() const;

    // Stored priority + 1, wide enough that no stored value overflows it.
    long long priority() const { return static_cast<long long>(record_.priority) + 1; }
    bool completed() const { return record_.completed != 0; }

    const TodoRecord& record() const { return record_; }

private:
    const TodoRecord& record_;
    std::string category_;
    std::string description_;
    std::string notes_;
};

#endif
