// Command lines: getopt_long over a table built from the declared names, its mistakes worded
// for the user.
#include "command_line.h"

#include <getopt.h>

namespace {
// getopt_long gives an option's value back, and in optopt the option a mistake is about: 0 for a
// name it does not know, the character of a short option, or the value of a long one. The names'
// values start past every character so that the three never meet.
constexpr int kFirstName = 1000;
constexpr int kHelp = 999;
} // namespace

void CommandLine::option(const char* name, std::string* value, bool* given) {
    names_.push_back({name, value, nullptr, given});
}

void CommandLine::flag(const char* name, bool* set) {
    names_.push_back({name, nullptr, set, nullptr});
}

// getopt_long says only that an argument was not taken: an unknown name, a start of two names,
// or a value given to a flag.
std::string CommandLine::unknown(const char* argument) const {
    const std::string given = argument;
    const std::string name = given.substr(0, given.find('='));
    std::string matches;
    for (const Name& n : names_) {
        if (n.name == name && n.set != nullptr)
            return "option " + n.name + " takes no value";
        if (name.size() > 2 && n.name.compare(0, name.size(), name) == 0)
            matches += (matches.empty() ? "" : ", ") + n.name;
    }
    if (matches.find(',') != std::string::npos)
        return "ambiguous option '" + given + "' (" + matches + ")";
    return "unknown option '" + given + "'";
}

void CommandLine::take(const Name& name, const char* value) {
    if (name.set != nullptr) {
        *name.set = true;
        return;
    }
    *name.value = value;
    if (name.given != nullptr)
        *name.given = true;
}

bool CommandLine::parse(int argc, const char* const* argv, bool& help, std::string& error) const {
    std::vector<::option> table;
    for (const Name& n : names_)
        table.push_back({n.name.c_str() + 2, n.value != nullptr ? required_argument : no_argument,
                         nullptr, kFirstName + static_cast<int>(&n - names_.data())});
    table.push_back({"help", no_argument, nullptr, kHelp});
    table.push_back({});
    // getopt_long puts the arguments that are no options last, so it needs a copy it may reorder.
    std::vector<char*> args;
    for (int i = 0; i < argc; i++)
        args.push_back(const_cast<char*>(argv[i]));
    args.push_back(nullptr);
    optind = 0; // a fresh scan, in the way of glibc
    opterr = 0;
    error.clear();
    for (int c; (c = getopt_long(argc, args.data(), ":h", table.data(), nullptr)) != -1;) {
        std::string mistake;
        if (c == 'h' || c == kHelp)
            help = true;
        else if (c == ':')
            mistake = "option " + names_[static_cast<std::size_t>(optopt - kFirstName)].name +
                      " needs a value";
        else if (c == '?' && optopt > 0 && optopt < kHelp)
            mistake = "unknown option '-" + std::string(1, static_cast<char>(optopt)) + "'";
        else if (c == '?')
            mistake = unknown(args[optind - 1]);
        else
            take(names_[static_cast<std::size_t>(c - kFirstName)], optarg);
        if (error.empty())
            error = mistake;
    }
    if (error.empty() && optind < argc)
        error = "unexpected argument '" + std::string(args[optind]) + "'";
    if (help)
        error.clear();
    return error.empty();
}
