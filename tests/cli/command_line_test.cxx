// The companions' command line: the conventions of getopt_long (either spelling of a value, an
// unambiguous start of a name, "--" ending the options, help wherever an option may stand
// winning over any mistake) and a one-line reason for each mistake.
#include "command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace {

struct Parsed {
    std::string format, dir, error;
    bool dryRun = false, allowHttp = false, help = false, ok = false;
};

Parsed parse(std::vector<const char*> args) {
    Parsed p;
    CommandLine line;
    line.option("--format", &p.format);
    line.option("--dir", &p.dir);
    line.flag("--dry-run", &p.dryRun);
    line.flag("--allow-http", &p.allowHttp);
    args.insert(args.begin(), "program");
    p.ok = line.parse(static_cast<int>(args.size()), args.data(), p.help, p.error);
    return p;
}

TEST(CommandLine, ReadsValuesAndFlagsTheWayGetoptDoes) {
    // The arguments, then the format, the directory and the two flags they give.
    const std::tuple<std::vector<const char*>, const char*, const char*, bool, bool> cases[] = {
        {{"--format", "csv", "--dir=/tmp"}, "csv", "/tmp", false, false},
        {{"--format=ics", "--format", "json"}, "json", "", false, false}, // the last one wins
        {{"--form", "csv", "--dr", "--al"}, "csv", "", true, true},       // unambiguous starts
        {{"--dir", "--dry-run"}, "", "--dry-run", false, false},          // a value as it stands
        {{"--dir="}, "", "", false, false},
        {{}, "", "", false, false},
    };
    for (const auto& [args, format, dir, dryRun, allowHttp] : cases) {
        Parsed p = parse(args);
        EXPECT_TRUE(p.ok && !p.help) << p.error;
        EXPECT_EQ(std::tie(p.format, p.dir, p.dryRun, p.allowHttp),
                  std::tie(format, dir, dryRun, allowHttp));
    }
}

TEST(CommandLine, SaysWhatIsWrongUnlessHelpIsAsked) {
    const std::pair<std::vector<const char*>, const char*> cases[] = {
        {{"--format"}, "option --format needs a value"},
        {{"--formats=csv"}, "unknown option '--formats=csv'"},
        {{"--=csv"}, "unknown option '--=csv'"}, // no name at all, not a start of each
        {{"--d", "x"}, "ambiguous option '--d' (--dir, --dry-run)"},
        {{"--dry-run=yes"}, "option --dry-run takes no value"},
        {{"-x"}, "unknown option '-x'"},
        {{"--format", "csv", "-"}, "unexpected argument '-'"},
        {{"--", "--format", "csv"}, "unexpected argument '--format'"},
        {{"stray", "--bad"}, "unknown option '--bad'"}, // options are read before the rest
    };
    for (const auto& [args, error] : cases) {
        Parsed p = parse(args);
        EXPECT_FALSE(p.ok);
        EXPECT_EQ(p.error, error);
        std::vector<const char*> asking = args;
        asking.insert(asking.begin(), args.size() % 2 ? "-h" : "--help");
        p = parse(asking);
        EXPECT_TRUE(p.ok && p.help && p.error.empty()) << error;
    }
    EXPECT_TRUE(parse({"-xh"}).help) << "short options run together";
    EXPECT_TRUE(parse({"--dir", "x", "stray", "--help"}).help) << "after a stray argument";
    EXPECT_EQ(parse({"--format", "-h"}).format, "-h") << "a value, not a call for help";
}

} // namespace
