// The command line of pindle_export: which format, which folder, or a call for help, and the
// help text that explains how each format treats the data.
#ifndef PINDLE_EXPORT_OPTIONS_H
#define PINDLE_EXPORT_OPTIONS_H

#include <string>

struct ExportOptions {
    enum class Format { None, Csv, Ics, Json };

    Format format = Format::None;
    std::string dir = ".";
    bool help = false;

    // Reads argv[1..argc-1]. On a mistake returns false with a one-line reason in `error`.
    // "--help" wins over any mistake.
    static bool parse(int argc, const char* const* argv, ExportOptions& options,
                      std::string& error);

    static const char* helpText();
};

#endif
