// The JSON document for the to-dos and categories.
#include "json_writer.h"

#include "todo_view.h"
#include "utf8_text.h"

#include <cstdio>
#include <cstring>

namespace JsonWriter {

namespace {

const char* shortEscape(char c) {
    switch (c) {
    case '"':
        return "\\\"";
    case '\\':
        return "\\\\";
    case '\b':
        return "\\b";
    case '\f':
        return "\\f";
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return nullptr;
    }
}

void writeTodo(std::ostream& out, const TodoView& todo) {
    std::string due = todo.hasDate() ? quote(todo.isoDate()) : "null";
    out << "    {\n"
        << "      \"due\": " << due << ",\n"
        << "      \"priority\": " << todo.priority() << ",\n"
        << "      \"completed\": " << (todo.completed() ? "true" : "false") << ",\n"
        << "      \"category\": " << quote(todo.category()) << ",\n"
        << "      \"description\": " << quote(todo.description()) << ",\n"
        << "      \"notes\": " << quote(todo.notes()) << "\n"
        << "    }";
}

// Writes the items of an array, one per line, with the commas JSON wants between them.
template <class Record, class WriteItem>
void writeArray(std::ostream& out, const char* name, const Record* head, WriteItem writeItem) {
    out << "  \"" << name << "\": [";
    for (const Record* r = head; r != nullptr; r = r->next) {
        out << (r == head ? "\n" : ",\n");
        writeItem(*r);
    }
    out << (head == nullptr ? "]" : "\n  ]");
}

} // namespace

std::string quote(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        const char* escape = shortEscape(c);
        if (escape != nullptr) {
            out += escape;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char code[8];
            std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(c));
            out += code;
        } else {
            out += c;
        }
    }
    return out + "\"";
}

void write(std::ostream& out, const TodoRecord* todos, const CategoryRecord* categories) {
    out << "{\n";
    writeArray(out, "todos", todos, [&out](const TodoRecord& r) { writeTodo(out, TodoView(r)); });
    out << ",\n";
    writeArray(out, "categories", categories, [&out](const CategoryRecord& r) {
        out << "    " << quote(Utf8Text::fromBytes(r.name, strnlen(r.name, sizeof r.name)));
    });
    out << "\n}\n";
}

} // namespace JsonWriter
