// How the data layer tells what it has to say about its files, one line at a time: a file that
// could not be opened for loading, a save that goes on after a notice, a save that fails. Every
// line goes to one sink. The default writes it to stderr, where the program's messages belong;
// a program may route lines elsewhere as well or instead: the window also shows a save's notice
// or failure in an alert box, and pindle_sync leaves out what is only a first start to it.
#ifndef PINDLE_DATA_REPORT_H
#define PINDLE_DATA_REPORT_H

namespace DataReport {

enum class Kind {
    Unreadable, // a store could not open its file and starts without it
    Recovery,   // what was done with a save cut short (a crash, a full disk); nothing was lost
    Notice,     // a save goes on after this
    Failure     // the program ends with status 200 after this
};

// Gets each line without its line end.
using Sink = void (*)(Kind kind, const char* line);

// Null restores the default.
void setSink(Sink sink);

// The default sink: the line and a line end on stderr.
void toStderr(Kind kind, const char* line);

// The two lines a store gives when it cannot open `fileName` for loading.
void unreadable(const char* fileName);

void recovery(const char* line);

void notice(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Ends the program with status 200 once the line has gone to the sink.
[[noreturn]] void fail(const char* format, ...) __attribute__((format(printf, 1, 2)));

} // namespace DataReport

#endif
