// The command line of pindle_sync, each value as given (empty when it was not; the settings
// file fills those in): the data folder, the collection, who signs in and where the password
// comes from, a CA file, --setup; and the help text that explains how it is all used and how a
// to-do maps onto a CalDAV task.
#ifndef PINDLE_SYNC_OPTIONS_H
#define PINDLE_SYNC_OPTIONS_H

#include <string>

struct SyncOptions {
    std::string dir;
    bool dirGiven = false;
    std::string url;
    std::string user;
    std::string passwordFile;
    std::string caFile;
    std::string taskList; // with --setup: which of the server's task lists, by name or URL
    bool setup = false;
    bool startOver = false;
    bool dryRun = false;
    bool allowHttp = false;
    bool help = false;

    // Reads argv[1..argc-1]. On a mistake returns false with a one-line reason in `error`.
    // "--help" wins over any mistake. What must be there is checked with the settings.
    static bool parse(int argc, const char* const* argv, SyncOptions& options, std::string& error);

    static const char* helpText();
};

#endif
