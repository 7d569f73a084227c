// Test helpers for the stores: a store that frees its records when the test ends (the program's
// own stores never do), and builders for hand-made file records.
#ifndef PINDLE_TEST_STORE_HELPERS_H
#define PINDLE_TEST_STORE_HELPERS_H

#include <cstdint>
#include <string>

// Constructs (and so loads) a store; empties it on destruction so leak checks stay meaningful.
template <class Store> struct ScopedStore : Store {
    ~ScopedStore() {
        while (this->head != nullptr)
            this->remove(this->head);
    }
};

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
    std::uint32_t link = 0;
};

// One 32124-byte to-do record as the file holds it, built independently of the program's code.
inline std::string todoBytes(const TodoFields& f) {
    std::string r = beInt(f.month) + beInt(f.day) + beInt(f.year) + beInt(f.priority);
    r += static_cast<char>(f.completed);
    r += field(f.category, 50) + field(f.description, 50) + field(f.notes, 32000);
    r += std::string(3, '\0') + beInt(static_cast<std::int32_t>(f.link));
    return r;
}

inline std::string categoryBytes(const std::string& name, std::uint32_t link = 0) {
    return field(name, 52) + beInt(static_cast<std::int32_t>(link));
}

#endif
