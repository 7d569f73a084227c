// How the data layer tells the user about a save that fails or that finds its file changed by
// another program. Every report is one line on stderr; a program with a window also gives a
// handler, which shows the same text where a user started from the desktop can see it.
#ifndef PINDLE_SAVE_REPORT_H
#define PINDLE_SAVE_REPORT_H

namespace SaveReport {

using Handler = void (*)(const char* message);

// Called with each report's text, without its line end, after it went to stderr.
void setHandler(Handler handler);

// A save goes on after this.
void notice(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Ends the program with status 200 once the report is made.
[[noreturn]] void fail(const char* format, ...) __attribute__((format(printf, 1, 2)));

} // namespace SaveReport

#endif
