// Command lines: a search of the declared names for each argument.
#include "command_line.h"

#include <cstring>

void CommandLine::option(const char* name, std::string* value) {
    names_.push_back({name, value, nullptr});
}

void CommandLine::flag(const char* name, bool* set) {
    names_.push_back({name, nullptr, set});
}

const CommandLine::Name* CommandLine::find(const std::string& name) const {
    for (const Name& n : names_) {
        if (n.name == name)
            return &n;
    }
    return nullptr;
}

bool CommandLine::parseOne(int argc, const char* const* argv, int& i, std::string& error) const {
    const std::string arg = argv[i];
    const std::string name = arg.substr(0, arg.find('='));
    const bool inlineValue = name.size() < arg.size();
    const Name* n = find(name);
    if (n == nullptr || (n->set != nullptr && inlineValue)) {
        error = (arg.size() > 1 && arg[0] == '-' ? "unknown option '" : "unexpected argument '") +
                arg + "'";
        return false;
    }
    if (n->set != nullptr) {
        *n->set = true;
        return true;
    }
    if (!inlineValue && i + 1 >= argc) {
        error = "option " + name + " needs a value";
        return false;
    }
    *n->value = inlineValue ? arg.substr(name.size() + 1) : argv[++i];
    return true;
}

bool CommandLine::parse(int argc, const char* const* argv, bool& help, std::string& error) const {
    for (int i = 1; i < argc; i++) {
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            help = true;
            return true;
        }
    }
    for (int i = 1; i < argc; i++) {
        if (!parseOne(argc, argv, i, error))
            return false;
    }
    return true;
}
