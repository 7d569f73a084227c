// Save reports: formatted once, written to stderr, then handed to the program's handler.
#include "save_report.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace SaveReport {

namespace {
Handler handler = nullptr;

void report(const char* format, std::va_list args) {
    char text[1024];
    std::vsnprintf(text, sizeof text, format, args);
    std::fprintf(stderr, "%s\n", text);
    if (handler != nullptr)
        handler(text);
}
} // namespace

void setHandler(Handler h) {
    handler = h;
}

void notice(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    report(format, args);
    va_end(args);
}

void fail(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    report(format, args);
    va_end(args);
    std::exit(200);
}

} // namespace SaveReport
