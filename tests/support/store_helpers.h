// The data files' record layout for the C++ tests and fuzzers, built from the documented format
// rather than the program's code, a to-do decoded from it, new records, a store that frees its
// records when a test ends, and whole files read as bytes.
#ifndef PINDLE_TEST_STORE_HELPERS_H
#define PINDLE_TEST_STORE_HELPERS_H

#include "category_store.h"
#include "data_folder.h"
#include "todo_store.h"

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

// Constructs (and so loads) a store; frees its records on destruction, for the leak checks.
template <class Store> struct ScopedStore : Store {
    ~ScopedStore() { this->clear(); }
};

// One writer of the current directory, as one program is: its own stores and the folder over
// them.
struct Writer {
    ScopedStore<TodoStore> todos;
    ScopedStore<CategoryStore> categories;
    DataFolder folder{todos, categories};
};

// The whole file in one read; empty when it is missing.
inline std::string readFile(const std::string& name) {
    struct stat info {};
    std::string bytes(stat(name.c_str(), &info) == 0 ? static_cast<std::size_t>(info.st_size) : 0,
                      '\0');
    std::ifstream(name, std::ios::binary).read(bytes.data(), static_cast<long>(bytes.size()));
    return bytes;
}

inline std::string beInt(std::int32_t v) {
    auto u = static_cast<std::uint32_t>(v);
    return {static_cast<char>(u >> 24), static_cast<char>(u >> 16), static_cast<char>(u >> 8),
            static_cast<char>(u)};
}

// A field of `size` bytes: the text, then zeros.
inline std::string field(const std::string& text, std::size_t size) {
    std::string f = text.substr(0, size);
    f.resize(size, '\0');
    return f;
}

struct TodoFields {
    std::int32_t month = 1, day = 1, year = 2005, priority = 0;
    unsigned char completed = 0;
    std::string category, description, notes;
};

// One 32124-byte record; its link slot is zero when it is the last, else one.
inline std::string todoBytes(const TodoFields& f, bool last = true) {
    std::string r = beInt(f.month) + beInt(f.day) + beInt(f.year) + beInt(f.priority);
    r += static_cast<char>(f.completed);
    r += field(f.category, 50) + field(f.description, 50) + field(f.notes, 32000);
    return r + std::string(3, '\0') + beInt(last ? 0 : 1);
}

// The to-do those bytes load as, its notes read whole.
inline std::unique_ptr<TodoRecord> todoRecord(const TodoFields& f) {
    auto r = std::make_unique<TodoRecord>();
    std::string bytes = todoBytes(f);
    r->decode(reinterpret_cast<const unsigned char*>(bytes.data()));
    r->setNotes(bytes.c_str() + 117);
    return r;
}

inline std::string categoryBytes(const std::string& name, bool last = true) {
    return field(name, 52) + beInt(last ? 0 : 1);
}

// A new to-do or category for a store to take, as the window makes them.
inline TodoRecord* newTodo(const char* description, const char* category = "",
                           bool completed = false) {
    auto* r = new TodoRecord;
    r->completed = completed ? 1 : 0;
    r->setCategory(category);
    r->setDescription(description);
    return r;
}

inline CategoryRecord* newCategory(const char* name) {
    auto* r = new CategoryRecord;
    r->setName(name);
    return r;
}

// Whole files, as the program writes them.
inline std::string todoFile(const std::vector<TodoFields>& todos) {
    std::string bytes;
    for (std::size_t i = 0; i < todos.size(); i++)
        bytes += todoBytes(todos[i], i + 1 == todos.size());
    return bytes;
}

inline std::string categoryFile(const std::vector<std::string>& names) {
    std::string bytes;
    for (std::size_t i = 0; i < names.size(); i++)
        bytes += categoryBytes(names[i], i + 1 == names.size());
    return bytes;
}

#endif
