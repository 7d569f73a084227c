// The command line both companions take, read with the C library's getopt_long and so with the
// conventions people know: options with a value as "--name value" or "--name=value" (the last
// one given wins), any unambiguous start of a name for the name, flags without a value, "--"
// ending the options, and "--help" or "-h" wherever an option may stand, which wins over any
// mistake. Each command says which names fill which of its fields; mistakes come back as one
// line.
#ifndef PINDLE_COMMAND_LINE_H
#define PINDLE_COMMAND_LINE_H

#include <string>
#include <vector>

class CommandLine {
public:
    // `name` is given with its leading "--"; `given`, if any, is set when the option is there.
    void option(const char* name, std::string* value, bool* given = nullptr);
    void flag(const char* name, bool* set);

    // Reads argv[1..argc-1] into the fields. On a mistake returns false with a one-line reason
    // in `error`; with --help returns true and sets `help`, whatever else stands there.
    bool parse(int argc, const char* const* argv, bool& help, std::string& error) const;

private:
    struct Name {
        std::string name;
        std::string* value;
        bool* set;
        bool* given;
    };
    std::string unknown(const char* argument) const;
    static void take(const Name& name, const char* value);

    std::vector<Name> names_;
};

#endif
