// Browser format codes in names and descriptions, which no dialog refuses, through the real
// window.
#include "support/store_helpers.h"
#include "support/ui_fixture.h"

#include <FL/Fl_Tabs.H>

namespace {

using Lines = std::vector<std::string>;
using FormatCodes = UiTest;

// Codes are read where the browser reads them: at the start of a category name, and at the
// start of each of the to-do list's five columns. Only those that would crash the toolkit or
// end the program are shown as typed instead: fonts outside 0-15 and sizes above 2000, as the
// codes leave them. Every line here is drawn.
TEST_F(FormatCodes, AreObeyedUnlessTheyBreakTheToolkit) {
    Lines names = {"@F15@S2000x",    "@S0@S-9x",  "@F16x",       "@F-1x",    "@S2001x",
                   "@S99999999999x", "@F14@b@ix", "@F12@b@F16x", "@F99@F1x", "@S99999@lx",
                   "@B5@F16x",       "a\t@F16x",  "@@F16x"};
    names.push_back("@F16" + std::string(46, 'y')); // a whole name keeps its room for "@."
    start(todoFile({{6, 15, 2999, 0, 0, "@F99999x", "x\t@S99999y", ""},
                    {6, 15, 2999, 0, 0, "Work", "a\tb\t@F99", ""},
                    {6, 15, 2004, 0, 0, "a\t@F16", "r", ""}}),
          categoryFile(names));
    Fl::flush(); // drawn now, under the sanitizers too
    EXPECT_EQ(lines(win->categoryBrowser),
              (Lines{"@F15@S2000x", "@S0@S-9x", "@.@F16x", "@.@F-1x", "@.@S2001x",
                     "@.@S99999999999x", "@F14@b@ix", "@.@F12@b@F16x", "@F99@F1x", "@S99999@lx",
                     "@.@B5@F16x", "a\t@F16x", "@@F16x", "@.@F16" + std::string(46, 'y')}));
    win->tabs->value(win->todoGroup); // no tab switch: the categories stay as they are
    Fl::flush();                      // drawn now, under the sanitizers too
    EXPECT_EQ(todoLines(),
              (Lines{"@C1@.1\t@C1@.6/15/2004\t@C1@.a\t@.@F16\t@C1@.r",
                     "1\t6/15/2999\tWork\ta\tb\t@F99", "1\t6/15/2999\t@.@F99999x\tx\t@.@S99999y"}));
}

} // namespace
