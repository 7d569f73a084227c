// The words of one reminder: a summary that counts the to-dos ("3 to-dos due today, 1 overdue")
// and a body with the first few of them, one a line, most urgent first.
#ifndef PINDLE_NOTIFICATION_TEXT_H
#define PINDLE_NOTIFICATION_TEXT_H

#include "due_list.h"

#include <cstddef>
#include <string>
#include <vector>

struct NotificationText {
    // Body lines beyond these are counted in a last line instead.
    static constexpr std::size_t kLines = 5;

    std::string summary;
    std::string body;

    // `todos` in the list's order, at least one. With `markup` (a service that reads the body
    // as markup), the to-dos' texts are escaped so that they show as typed.
    static NotificationText compose(const std::vector<DueTodo>& todos, bool markup);
};

#endif
