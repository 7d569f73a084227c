// CSV rows for the to-dos.
#include "csv_writer.h"

#include "todo_view.h"

#include <cstring>

namespace CsvWriter {

namespace {

// The characters spreadsheets take as the start of a formula or of a cell to re-parse.
bool startsFormula(const std::string& text) {
    return !text.empty() && std::strchr("=+-@\t\r", text[0]) != nullptr;
}

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"')
            out += '"';
        out += c;
    }
    return out + "\"";
}

void writeRow(std::ostream& out, const TodoView& todo) {
    out << todo.isoDate() << ',' << todo.priority() << ',' << (todo.completed() ? 1 : 0) << ','
        << textCell(todo.category()) << ',' << textCell(todo.description()) << ','
        << textCell(todo.notes()) << "\r\n";
}

} // namespace

std::string textCell(const std::string& text) {
    std::string cell = startsFormula(text) ? "'" + text : text;
    if (cell.find_first_of(",\"\r\n") != std::string::npos)
        return quoted(cell);
    return cell;
}

void write(std::ostream& out, const TodoRecord* head) {
    out << "due,priority,completed,category,description,notes\r\n";
    for (const TodoRecord* r = head; r != nullptr; r = r->next)
        writeRow(out, TodoView(*r));
}

} // namespace CsvWriter
