// The format codes parsed as Fl_Browser::item_draw parses them, for a browser with the default
// font and size.
#include "browser_text.h"

#include <FL/Enumerations.H>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace BrowserText {

namespace {

// Numbers are read with strtol and cut to an int, as the toolkit does, so a value too large
// for an int lands where it lands there.
int number(const char*& text) {
    char* end = nullptr;
    long value = std::strtol(text, &end, 10);
    text = end;
    return static_cast<int>(value);
}

bool harmful(const char* column) {
    int font = FL_HELVETICA;
    int size = FL_NORMAL_SIZE;
    const char* p = column;
    while (p[0] == '@' && p[1] != '\0' && p[1] != '@' && p[1] != '.') {
        char code = p[1];
        p += 2;
        switch (code) {
        case 'F':
            font = number(p);
            break;
        case 'S':
            size = number(p);
            break;
        case 'B':
        case 'C':
            number(p); // a colour: any number names one
            break;
        case 'b':
            font |= FL_BOLD;
            break;
        case 'i':
            font |= FL_ITALIC;
            break;
        case 'f':
        case 't':
            font = FL_COURIER;
            break;
        case 'l':
        case 'L':
            size = 24;
            break;
        case 'm':
        case 'M':
            size = 18;
            break;
        case 's':
            size = 11;
            break;
        default:
            break;
        }
    }
    return font < 0 || font >= FL_FREE_FONT || size > kLargestSize;
}

// Moves the rest of the line on to make room for "@." at `at`; `last` is where the terminator
// must stay.
void insertStop(char* at, char* last) {
    auto room = static_cast<std::size_t>(last - at);
    if (room < 2) {
        *at = '\0';
        return;
    }
    std::size_t kept = std::min(std::strlen(at), room - 2);
    std::memmove(at + 2, at, kept);
    at[0] = '@';
    at[1] = '.';
    at[kept + 2] = '\0';
}

} // namespace

void guard(char* line, std::size_t size, int splitTabs) {
    char* column = line;
    for (int tabs = 0; column != nullptr; tabs++) {
        if (*column == '@' && harmful(column))
            insertStop(column, line + size - 1);
        if (tabs == splitTabs)
            break;
        column = std::strchr(column, '\t');
        if (column != nullptr)
            column++;
    }
}

} // namespace BrowserText
