// Parsing pindle_remind's options and its help text.
#include "remind_options.h"

#include "command_line.h"

#include <charconv>

namespace {

bool parseSeconds(const std::string& text, int& seconds) {
    const char* end = text.data() + text.size();
    auto [stop, problem] = std::from_chars(text.data(), end, seconds);
    return !text.empty() && problem == std::errc() && stop == end && seconds >= 0 &&
           seconds <= RemindOptions::kMaxWait;
}

} // namespace

bool RemindOptions::parse(int argc, const char* const* argv, RemindOptions& options,
                          std::string& error) {
    CommandLine line;
    std::string wait;
    bool waitGiven = false;
    line.option("--dir", &options.dir);
    line.option("--wait", &wait, &waitGiven);
    if (!line.parse(argc, argv, options.help, error) || options.help)
        return error.empty();
    if (options.dir.empty())
        error = "option --dir needs a folder";
    else if (waitGiven && !parseSeconds(wait, options.waitSeconds))
        error = "option --wait needs a number of seconds from 0 to " + std::to_string(kMaxWait) +
                ", not '" + wait + "'";
    return error.empty();
}

const char* RemindOptions::helpText() {
    return R"(Usage: pindle_remind [--dir FOLDER] [--wait SECONDS]

Announces on the desktop the to-dos of Pindle ToDo that are due today or overdue, in one
notification: how many there are, and the first few, most urgent first (the list's order).
Completed to-dos are never announced; with nothing due, nothing is shown. Reads
pindle_todo.db and cat.db from FOLDER (default: the current folder) and never changes them.

What was announced is kept for the day in FOLDER/.pindle_remind.json (readable by you alone),
so a later run the same day announces only what became due or overdue since; the next day
announces everything due again.

The notification offers "Open", which starts Pindle ToDo (the pindle_todo installed beside
this command) on FOLDER. An answer reaches only a command still running, so it waits for one
until the notification is answered, closed or expires, at most SECONDS.

Options:
  --dir FOLDER     read the files from FOLDER.
  --wait SECONDS   wait at most this long for "Open", 0 to 86400 (default 600); 0 does not
                   wait.
  -h, --help       show this text.

Exit status: 0 when the due to-dos were announced or nothing was due, 1 when the folder or a
file cannot be read, what was announced cannot be written, or the window cannot be started,
2 for a mistake on the command line, 3 when the session has no bus or no notification service
(nothing is written then).
)";
}
