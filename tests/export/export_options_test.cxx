// pindle_export's command line: the accepted spellings and the mistakes it reports.
#include "export_options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Format = ExportOptions::Format;

struct Parsed {
    bool ok;
    ExportOptions options;
    std::string error;
};

Parsed parse(std::vector<const char*> args) {
    args.insert(args.begin(), "pindle_export");
    Parsed p;
    p.ok = ExportOptions::parse(static_cast<int>(args.size()), args.data(), p.options, p.error);
    return p;
}

TEST(ExportOptions, AcceptsBothSpellingsOfEachOption) {
    struct Case {
        std::vector<const char*> args;
        Format format;
        std::string dir;
    } cases[] = {
        {{"--format", "csv"}, Format::Csv, "."},
        {{"--format=ics"}, Format::Ics, "."},
        {{"--dir", "/tmp/x", "--format", "json"}, Format::Json, "/tmp/x"},
        {{"--format", "csv", "--dir=a b"}, Format::Csv, "a b"},
        {{"--format", "csv", "--format", "ics"}, Format::Ics, "."},
    };
    for (const Case& c : cases) {
        Parsed p = parse(c.args);
        ASSERT_TRUE(p.ok) << p.error;
        EXPECT_EQ(p.options.format, c.format);
        EXPECT_EQ(p.options.dir, c.dir);
        EXPECT_FALSE(p.options.help);
    }
}

TEST(ExportOptions, ReportsMistakes) {
    struct Case {
        std::vector<const char*> args;
        std::string error;
    } cases[] = {
        {{}, "choose a format with --format csv, --format ics or --format json"},
        {{"--format", "xml"}, "unknown format 'xml' (use csv, ics or json)"},
        {{"--format"}, "option --format needs a value"},
        {{"--format", "csv", "--dir"}, "option --dir needs a value"},
        {{"--format", "csv", "--dir="}, "option --dir needs a folder"},
        {{"--formats=csv"}, "unknown option '--formats=csv'"},
        {{"--format", "csv", "extra"}, "unexpected argument 'extra'"},
        {{"--format", "csv", "-"}, "unexpected argument '-'"},
    };
    for (const Case& c : cases) {
        Parsed p = parse(c.args);
        EXPECT_FALSE(p.ok) << c.error;
        EXPECT_EQ(p.error, c.error);
    }
}

TEST(ExportOptions, HelpWinsOverEverythingElse) {
    for (const char* help : {"--help", "-h"}) {
        Parsed p = parse({"--format", "xml", help, "stray"});
        EXPECT_TRUE(p.ok);
        EXPECT_TRUE(p.options.help);
    }
}

} // namespace
