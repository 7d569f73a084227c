// The JSON export: one object holding the array of to-dos and the array of category names, laid
// out two spaces to a level so that it reads and diffs well.
#ifndef PINDLE_JSON_WRITER_H
#define PINDLE_JSON_WRITER_H

#include "category_store.h"
#include "todo_store.h"

#include <ostream>
#include <string>

namespace JsonWriter {

// {"todos": [...], "categories": [...]}, each to-do an object with "due" (an ISO date or null),
// "priority", "completed", "category", "description" and "notes".
void write(std::ostream& out, const TodoRecord* todos, const CategoryRecord* categories);

// A JSON string literal, quotes included, for UTF-8 text.
std::string quote(const std::string& text);

} // namespace JsonWriter

#endif
