// Hand-damaged data files through the real window: odd lengths, strings without terminators,
// numbers no dialog would store, and the edit, date-button and save paths run on such records.
#include "cal_date.h"
#include "support/store_helpers.h"
#include "support/ui_fixture.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Output.H>
#include <FL/Fl_Tabs.H>
#include <FL/Fl_Value_Input.H>

#include <algorithm>
#include <climits>

namespace {

using Lines = std::vector<std::string>;

const std::string kCategories = categoryBytes("Unassigned", 1) + categoryBytes("Work");

// Far in the future, so an undamaged date gives a plain line whatever today is.
TodoFields future(const std::string& description) {
    TodoFields f;
    f.month = 6, f.day = 15, f.year = 2999;
    f.category = "Work";
    f.description = description;
    return f;
}

std::string repeat(const TodoFields& f, int times) {
    std::string one = todoBytes(f);
    std::string all;
    all.reserve(one.size() * static_cast<std::size_t>(times));
    for (int i = 0; i < times; i++)
        all += one;
    return all;
}

// Lets the window draw, so that drawing the damaged lines runs under the sanitizers too.
void drawNow(TodoWindow& w) {
    w.window->redraw();
    Fl::check();
}

void showCompleted(TodoWindow& w) {
    w.showCompletedButton->value(1);
    w.showCompletedButton->do_callback();
}

struct TodoCase {
    const char* name;
    std::string file;
    Lines lines; // with Show Completed on
};

std::string withTail(int records, std::size_t tail) {
    return repeat(future("r"), records) + std::string(tail, 'T');
}

TodoFields with(TodoFields f, void (*change)(TodoFields&)) {
    change(f);
    return f;
}

std::vector<TodoCase> todoCases() {
    const std::string line = "1\t6/15/2999\tWork\tr";
    TodoFields unterminated = future("");
    unterminated.category = std::string(50, 'c');
    unterminated.description = std::string(50, 'd');
    unterminated.notes = std::string(32000, 'n');
    std::string runOn = std::string(50, 'c') + std::string(50, 'd') + std::string(200, 'n');
    std::string bytes = todoBytes(unterminated);
    bytes.replace(32117, 3, "ppp"); // the padding, too, holds no zero
    return {
        {"Empty", "", {}},
        {"OneByte", "x", {}},
        {"OneByteShort", withTail(1, 0).substr(0, 32123), {}},
        {"ExactlyOne", withTail(1, 0), {line}},
        {"OneByteOver", withTail(1, 1), {line}},
        {"ThreeAndATail", withTail(3, 20000), {line, line, line}},
        {"NoTerminatorAnywhere", bytes, {("1\t6/15/2999\t" + runOn).substr(0, 255)}},
        {"PriorityMinusFive",
         todoBytes(with(future("p"), [](TodoFields& f) { f.priority = -5; })),
         {"-4\t6/15/2999\tWork\tp"}},
        {"Priority1000",
         todoBytes(with(future("p"), [](TodoFields& f) { f.priority = 1000; })),
         {"1001\t6/15/2999\tWork\tp"}},
        {"PriorityIntMin",
         todoBytes(with(future("p"), [](TodoFields& f) { f.priority = INT_MIN; })),
         {"-2147483647\t6/15/2999\tWork\tp"}},
        {"PriorityIntMax",
         todoBytes(with(future("p"), [](TodoFields& f) { f.priority = INT_MAX; })),
         {"2147483648\t6/15/2999\tWork\tp"}},
        {"MonthZero",
         todoBytes(with(future("m"), [](TodoFields& f) { f.month = 0; })),
         {"1\t0/15/2999\tWork\tm"}},
        {"Month13",
         todoBytes(with(future("m"), [](TodoFields& f) { f.month = 13; })),
         {"1\t13/15/2999\tWork\tm"}},
        {"MonthMinusOne",
         todoBytes(with(future("m"), [](TodoFields& f) { f.month = -1; })),
         {"1\t-1/15/2999\tWork\tm"}},
        {"CompletedSeven",
         todoBytes(with(future("c"), [](TodoFields& f) { f.completed = 7; })),
         {"@-@.1\t@-@.6/15/2999\t@-@.Work\t@-@.c"}},
        {"Category51Bytes",
         todoBytes(with(future(""), [](TodoFields& f) { f.category = std::string(50, 'k'); }))
             .replace(67, 1, "k"),
         {"1\t6/15/2999\t" + std::string(51, 'k') + "\tk"}},
    };
}

// Test names show the case's name, not its bytes.
void PrintTo(const TodoCase& c, std::ostream* out) {
    *out << c.name;
}

class TodoFileCase : public UiTest, public testing::WithParamInterface<TodoCase> {};

// Loads, lists, draws, then a tab switch saves: the rewrite holds every whole record and
// nothing of a partial one.
TEST_P(TodoFileCase, LoadsListsAndSavesWhatIsStored) {
    const TodoCase& c = GetParam();
    start(&c.file, &kCategories);
    EXPECT_TRUE(win->window->shown());
    showCompleted(*win);
    EXPECT_EQ(todoLines(), c.lines);
    switchTab();
    drawNow(*win);
    EXPECT_EQ(readFile("pindle_todo.db").size(), c.lines.size() * 32124);
}

INSTANTIATE_TEST_SUITE_P(Damaged, TodoFileCase, testing::ValuesIn(todoCases()),
                         [](const testing::TestParamInfo<TodoCase>& info) {
                             return std::string(info.param.name);
                         });

using MalformedFiles = UiTest;

// The record's three strings end only at the notes' last byte, which the load forces to zero.
// The description field then shows everything up to there; Save cuts it back into its record.
TEST_F(MalformedFiles, UnterminatedStringsEditAndSaveWithinTheRecord) {
    TodoFields f = future("");
    f.category = std::string(50, 'c');
    f.description = std::string(50, 'd');
    f.notes = std::string(32000, 'n');
    std::string file = todoBytes(f);
    start(&file, &kCategories);
    switchTab();
    selectLine(win->todoBrowser, 1);
    win->editTodoButton->do_callback();
    ASSERT_TRUE(entryDialog.window->shown());
    EXPECT_EQ(std::string(entryDialog.descriptionInput->value()),
              std::string(50, 'd') + std::string(31999, 'n'));
    EXPECT_EQ(entryDialog.notesBuffer.length(), 31999);
    EXPECT_STREQ(entryDialog.categoryChoice->text(), "Unassigned");
    entryDialog.saveButton->do_callback();
    drawNow(*win);

    std::string saved = readFile("pindle_todo.db");
    ASSERT_EQ(saved.size(), 32124u);
    EXPECT_EQ(saved.substr(17, 50), field("Unassigned", 50));
    EXPECT_EQ(saved.substr(67, 50), std::string(50, 'd'));
    EXPECT_TRUE(saved.substr(117, 32000) == std::string(31999, 'n') + '\0');
}

// Sixty megabytes of records load, list, and save whole.
TEST_F(MalformedFiles, SixtyMegabyteFile) {
    const int records = 1900;
    std::string file = repeat(future("bulk"), records);
    start(&file, &kCategories);
    EXPECT_EQ(todoStore.count(), records);
    EXPECT_EQ(win->todoBrowser->size(), records);
    switchTab();
    drawNow(*win);
    EXPECT_EQ(readFile("pindle_todo.db").size(), file.size());
}

// A category the list does not hold becomes "Unassigned" at the tab switch; the run-on
// byte in the description stays, now as the description itself.
TEST_F(MalformedFiles, RunOnCategoryIsReassignedAtTheTabSwitch) {
    TodoFields f = future("");
    f.category = std::string(50, 'k');
    std::string file = todoBytes(f).replace(67, 1, "k");
    start(&file, &kCategories);
    switchTab();
    EXPECT_EQ(todoLines(), Lines{"1\t6/15/2999\tUnassigned\tk"});
    std::string saved = readFile("pindle_todo.db");
    EXPECT_EQ(saved.substr(17, 50), field("Unassigned", 50));
    EXPECT_EQ(saved.substr(67, 2), std::string("k\0", 2));
}

// The priority choice has entries for 0-8 only: a stored priority outside them leaves the
// choice on what it showed before, and that is what Save stores.
TEST_F(MalformedFiles, PriorityWithoutAChoiceEntryKeepsThePreviousEntry) {
    TodoFields known = future("known"), damaged = future("damaged");
    known.priority = 3;
    damaged.priority = 1000;
    damaged.day = 16;
    std::string file = todoBytes(known) + todoBytes(damaged);
    start(&file, &kCategories);
    switchTab();
    selectLine(win->todoBrowser, 1);
    win->editTodoButton->do_callback();
    entryDialog.cancelButton->do_callback();
    selectLine(win->todoBrowser, 2);
    win->editTodoButton->do_callback();
    EXPECT_EQ(entryDialog.priorityChoice->value(), 3);
    entryDialog.saveButton->do_callback();
    EXPECT_EQ(readFile("pindle_todo.db").substr(32124 + 12, 4), beInt(3));
}

struct DateCase {
    int month;
    const char* button;
    const char* shown; // the dialog's date and weekday after the button
};

Fl_Button* dateButton(const std::string& label) {
    Fl_Button* buttons[] = {entryDialog.dayPlusButton,   entryDialog.dayMinusButton,
                            entryDialog.monthPlusButton, entryDialog.monthMinusButton,
                            entryDialog.yearPlusButton,  entryDialog.yearMinusButton};
    for (Fl_Button* b : buttons) {
        if (label == b->label())
            return b;
    }
    return nullptr;
}

// Month 13 counts as January of the next year, 0 as December and -1 as November of the year
// before. Month 0 has no days, so a button that clamps the day lowers it to 0.
const DateCase kDateCases[] = {
    {13, "Day &+", "1/16/2005 Sunday"},    {13, "Day &-", "1/14/2005 Friday"},
    {13, "Month +", "2/15/2005 Tuesday"},  {13, "Month -", "12/15/2004 Wednesday"},
    {13, "Year +", "13/15/2005 Saturday"}, {13, "Year -", "13/15/2003 Saturday"},
    {0, "Day &+", "12/16/2003 Tuesday"},   {0, "Day &-", "12/14/2003 Sunday"},
    {0, "Month +", "1/15/2004 Thursday"},  {0, "Month -", "11/15/2003 Saturday"},
    {0, "Year +", "0/0/2005 Monday"},      {0, "Year -", "0/0/2003 Monday"},
    {-1, "Day &+", "11/16/2003 Sunday"},   {-1, "Day &-", "11/14/2003 Friday"},
    {-1, "Month +", "0/0/2004 Sunday"},    {-1, "Month -", "10/15/2003 Wednesday"},
    {-1, "Year +", "-1/15/2005 Saturday"}, {-1, "Year -", "-1/15/2003 Saturday"},
};

// Each button on a to-do stored with month 13, 0 or -1 in 2004, then Save: the shown date is
// what the file and the list get.
TEST_F(MalformedFiles, DateButtonsOnDamagedMonthsThenSave) {
    std::string file;
    for (int month : {13, 0, -1}) {
        TodoFields f = future("");
        f.month = month, f.year = 2004, f.category = "Unassigned";
        f.description = std::to_string(month);
        file += todoBytes(f);
    }
    start(&file, &kCategories);
    switchTab();
    for (const DateCase& c : kDateCases) {
        SCOPED_TRACE(std::to_string(c.month) + " " + c.button);
        int position = c.month == 13 ? 0 : c.month == 0 ? 1 : 2;
        TodoRecord* record = todoStore.at(position);
        record->month = c.month, record->day = 15, record->year = 2004;
        win->fillTodoBrowser();
        for (int line = 1; line <= win->todoBrowser->size(); line++) {
            if (win->todoBrowser->data(line) == record)
                selectLine(win->todoBrowser, line);
        }
        win->editTodoButton->do_callback();
        Fl_Button* button = dateButton(c.button);
        ASSERT_NE(button, nullptr);
        button->do_callback();
        EXPECT_EQ(shownEntryDate(), c.shown);
        entryDialog.saveButton->do_callback();
        drawNow(*win);
        std::string saved = readFile("pindle_todo.db").substr(position * 32124u, 12);
        EXPECT_EQ(saved, beInt(static_cast<int>(entryDialog.monthInput->value())) +
                             beInt(static_cast<int>(entryDialog.dayInput->value())) +
                             beInt(static_cast<int>(entryDialog.yearInput->value())));
        // Every shown date lies in the past, so the line is an overdue one.
        std::string date = std::string(c.shown).substr(0, std::string(c.shown).find(' '));
        Lines shown = todoLines();
        EXPECT_NE(std::find(shown.begin(), shown.end(),
                            "@C1@.1\t@C1@." + date + "\t@C1@.Unassigned\t@C1@." +
                                std::to_string(c.month)),
                  shown.end());
    }
}

// A name or description may hold the list's format codes; some (a size Xft cannot open, a
// font that does not exist) ended the program as soon as the list was drawn. Those are shown
// as text; harmless ones keep their effect in plain lines.
TEST_F(MalformedFiles, HarmfulFormatCodesInTextAreShownNotObeyed) {
    std::string cats = categoryBytes("Unassigned", 1) + categoryBytes("@S99999x", 1) +
                       categoryBytes("@F99999x", 1) + categoryBytes("a\t@S99999x", 1) +
                       categoryBytes("@b@S200@F15@C4Big", 1) + categoryBytes("@b@S0tiny");
    TodoFields plain = future("x\t@S99999y"), overdue = future("a\t@F99999x");
    plain.category = "@F99999x";
    overdue.year = 2004;
    std::string todos = todoBytes(plain) + todoBytes(overdue);
    start(&todos, &cats);
    drawNow(*win);
    EXPECT_EQ(lines(win->categoryBrowser),
              (Lines{"Unassigned", "@.@S99999x", "@.@F99999x", "a\t@S99999x", "@b@S200@F15@C4Big",
                     "@b@S0tiny"}));
    switchTab();
    drawNow(*win);
    EXPECT_EQ(todoLines(), (Lines{"@C1@.1\t@C1@.6/15/2004\t@C1@.Unassigned\t@C1@.a\t@.@F99999x",
                                  "1\t6/15/2999\t@.@F99999x\tx\t@.@S99999y"}));
}

struct CategoryCase {
    const char* name;
    std::string file;
    Lines names;
};

std::vector<CategoryCase> categoryCases() {
    std::string unterminated = std::string(52, 'u') + beInt(0);
    return {
        {"Empty", "", {}},
        {"OneByteShort", categoryBytes("Work").substr(0, 55), {}},
        {"OneByteOver", categoryBytes("Work") + "x", {"Work"}},
        {"TwoAndAHalf",
         categoryBytes("A", 1) + categoryBytes("B") + std::string(28, 'h'),
         {"A", "B"}},
        {"UnterminatedName", unterminated, {std::string(51, 'u')}},
        {"UnterminatedThenNormal",
         unterminated + categoryBytes("Work"),
         {std::string(51, 'u'), "Work"}},
    };
}

void PrintTo(const CategoryCase& c, std::ostream* out) {
    *out << c.name;
}

class CategoryFileCase : public UiTest, public testing::WithParamInterface<CategoryCase> {};

// Whatever the file, the category list shows its whole records, an unterminated name cut to
// 51 bytes, and a tab switch gives every to-do a category that list holds.
TEST_P(CategoryFileCase, LoadsListsAndReassigns) {
    const CategoryCase& c = GetParam();
    std::string todos = todoBytes(future("t"));
    start(&todos, &c.file);
    EXPECT_EQ(lines(win->categoryBrowser), c.names);
    drawNow(*win);
    switchTab();
    ASSERT_EQ(todoStore.count(), 1);
    bool kept = std::find(c.names.begin(), c.names.end(), "Work") != c.names.end();
    EXPECT_STREQ(todoStore.head->category, kept ? "Work" : "Unassigned");
    win->newCategoryButton->do_callback();
    categoryDialog.nameInput->value("New");
    categoryDialog.saveButton->do_callback();
    EXPECT_EQ(readFile("cat.db").size(), (c.names.size() + 1) * 56);
}

INSTANTIATE_TEST_SUITE_P(Damaged, CategoryFileCase, testing::ValuesIn(categoryCases()),
                         [](const testing::TestParamInfo<CategoryCase>& info) {
                             return std::string(info.param.name);
                         });

} // namespace
