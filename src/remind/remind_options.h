// The command line of pindle_remind: which folder, how long to wait for an answer to the
// notification, or a call for help; and the help text.
#ifndef PINDLE_REMIND_OPTIONS_H
#define PINDLE_REMIND_OPTIONS_H

#include <string>

struct RemindOptions {
    static constexpr int kMaxWait = 86400;

    std::string dir = ".";
    int waitSeconds = 600;
    bool help = false;

    // Reads argv[1..argc-1]. On a mistake returns false with a one-line reason in `error`.
    // "--help" wins over any mistake.
    static bool parse(int argc, const char* const* argv, RemindOptions& options,
                      std::string& error);

    static const char* helpText();
};

#endif
