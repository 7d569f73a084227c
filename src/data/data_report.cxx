// Data reports: formatted once into a line, then handed to the sink.
#include "data_report.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace DataReport {

namespace {
Sink sink = toStderr;

void report(Kind kind, const char* format, std::va_list args) {
    char line[1024];
    std::vsnprintf(line, sizeof line, format, args);
    sink(kind, line);
}
} // namespace

void setSink(Sink s) {
    sink = s != nullptr ? s : toStderr;
}

void toStderr(Kind, const char* line) {
    std::fprintf(stderr, "%s\n", line);
}

void unreadable(const char* fileName) {
    char line[300];
    std::snprintf(line, sizeof line, "could not open file %s", fileName);
    sink(Kind::Unreadable, line);
    sink(Kind::Unreadable, "skipping over reading record");
}

void recovery(const char* line) {
    sink(Kind::Recovery, line);
}

void notice(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    report(Kind::Notice, format, args);
    va_end(args);
}

void fail(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    report(Kind::Failure, format, args);
    va_end(args);
    std::exit(200);
}

} // namespace DataReport
