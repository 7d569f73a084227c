// Counting and listing the to-dos; escaping with GLib's markup escaper, the one the services'
// markup parsers agree with.
#include "notification_text.h"

#include <glib.h>

namespace {

std::string counted(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " to-do" : " to-dos");
}

std::string escaped(const std::string& text, bool markup) {
    if (!markup)
        return text;
    gchar* escaped = g_markup_escape_text(text.data(), static_cast<gssize>(text.size()));
    std::string result = escaped;
    g_free(escaped);
    return result;
}

std::string line(const DueTodo& todo, bool markup) {
    std::string text = todo.description.empty() ? "(no description)" : todo.description;
    if (todo.overdue)
        text += " (due " + todo.due + ")";
    return escaped(text, markup);
}

} // namespace

NotificationText NotificationText::compose(const std::vector<DueTodo>& todos, bool markup) {
    std::size_t overdue = 0;
    for (const DueTodo& todo : todos)
        overdue += todo.overdue ? 1 : 0;
    const std::size_t today = todos.size() - overdue;
    NotificationText text;
    if (today > 0 && overdue > 0)
        text.summary = counted(today) + " due today, " + std::to_string(overdue) + " overdue";
    else if (today > 0)
        text.summary = counted(today) + " due today";
    else
        text.summary = counted(overdue) + " overdue";
    for (std::size_t i = 0; i < todos.size() && i < kLines; i++)
        text.body += (i == 0 ? "" : "\n") + line(todos[i], markup);
    if (todos.size() > kLines)
        text.body += "\nand " + std::to_string(todos.size() - kLines) + " more";
    return text;
}
