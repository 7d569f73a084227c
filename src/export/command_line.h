// The command line both companions take: options with a value, as "--name value" or
// "--name=value" (the last one given wins), flags without one, and "--help" or "-h" anywhere,
// which wins over everything else. Each command says which names fill which of its fields.
#ifndef PINDLE_COMMAND_LINE_H
#define PINDLE_COMMAND_LINE_H

#include <string>
#include <vector>

class CommandLine {
public:
    void option(const char* name, std::string* value);
    void flag(const char* name, bool* set);

    // Reads argv[1..argc-1] into the fields. On a mistake returns false with a one-line reason
    // in `error`; with --help returns true, sets `help` and reads nothing else.
    bool parse(int argc, const char* const* argv, bool& help, std::string& error) const;

private:
    struct Name {
        std::string name;
        std::string* value;
        bool* set;
    };
    const Name* find(const std::string& name) const;
    bool parseOne(int argc, const char* const* argv, int& i, std::string& error) const;

    std::vector<Name> names_;
};

#endif
