// Guarding browser lines against format codes the toolkit cannot draw. The codes are parsed
// the way Fl_Browser reads them: "@" and a letter, some followed by a number, until "@." or text.
#include "browser_text.h"

#include <FL/Enumerations.H>

#include <cstdlib>
#include <cstring>

namespace BrowserText {

namespace {
// Sizes above this make the font library give up and end the program.
constexpr long kLargestSize = 200;

bool harmfulNumber(char code, const char* digits, const char** rest) {
    char* end = nullptr;
    long value = std::strtol(digits, &end, 10);
    *rest = end;
    if (code == 'F')
        return value < 0 || value >= FL_FREE_FONT;
    if (code == 'S')
        return value < 1 || value > kLargestSize;
    return false; // colours: any number names one
}
} // namespace

bool hasHarmfulCodes(const char* column) {
    const char* p = column;
    while (p[0] == '@' && p[1] != '\0' && p[1] != '@') {
        char code = p[1];
        p += 2;
        if (code == '.')
            return false;
        if ((code == 'F' || code == 'S' || code == 'B' || code == 'C') &&
            harmfulNumber(code, p, &p))
            return true;
    }
    return false;
}

void append(char* line, std::size_t size, const char* text, bool columnStart) {
    char* out = line + std::strlen(line);
    const char* end = line + size - 1;
    // Text that fits without an "@" holds no codes to guard: one copy, as list rebuilds need.
    std::size_t room = static_cast<std::size_t>(end - out);
    std::size_t length = strnlen(text, room);
    if (std::memchr(text, '@', length) == nullptr) {
        std::memcpy(out, text, length);
        out[length] = '\0';
        return;
    }
    for (; *text != '\0' && out < end; text++) {
        if (columnStart && *text == '@' && hasHarmfulCodes(text)) {
            if (end - out < 3)
                break;
            *out++ = '@';
            *out++ = '.';
        }
        columnStart = *text == '\t';
        *out++ = *text;
    }
    *out = '\0';
}

} // namespace BrowserText
