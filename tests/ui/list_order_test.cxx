// The to-do list against a plain rebuild that places each line by scanning from the top, as
// the list was first built: same lines, same order, same records, for random stores.
#include "cal_date.h"
#include "support/ui_fixture.h"

#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>

#include <cstdio>
#include <random>
#include <utility>

namespace {

using Line = std::pair<std::string, const TodoRecord*>;

std::string referenceText(const TodoRecord& r, int today) {
    const char* codes = r.completed                                          ? "@-@."
                        : CalDate::dayNumber(r.month, r.day, r.year) < today ? "@C1@."
                                                                             : "";
    char columns[256];
    std::snprintf(columns, sizeof columns, "%s%lld\t%s%d/%d/%d\t%s%s\t", codes,
                  static_cast<long long>(r.priority) + 1, codes, r.month, r.day, r.year, codes,
                  r.category);
    std::string line = std::string(columns) + codes + r.description;
    return line.substr(0, 255);
}

// Every pass calls count() and at(i); each line is placed above the first listed line whose
// date is later, or equal with a priority that is not lower.
std::vector<Line> referenceRebuild(const char* filter, bool showCompleted) {
    int m = 0, d = 0, y = 0;
    CalDate::today(m, d, y);
    int today = CalDate::dayNumber(m, d, y);
    std::vector<Line> list;
    for (int i = 0; i < todoStore.count(); i++) {
        const TodoRecord* r = todoStore.at(i);
        if (filter != nullptr && std::string(filter) != r->category)
            continue;
        if (r->completed && !showCompleted)
            continue;
        int mine = CalDate::dayNumber(r->month, r->day, r->year);
        auto at = list.begin();
        for (; at != list.end(); ++at) {
            const TodoRecord* e = at->second;
            int theirs = CalDate::dayNumber(e->month, e->day, e->year);
            if (mine < theirs || (mine == theirs && r->priority <= e->priority))
                break;
        }
        list.insert(at, {referenceText(*r, today), r});
    }
    return list;
}

std::vector<Line> shown(const Fl_Browser* browser) {
    std::vector<Line> out;
    for (int i = 1; i <= browser->size(); i++)
        out.emplace_back(browser->text(i), static_cast<const TodoRecord*>(browser->data(i)));
    return out;
}

void addRandomTodos(std::mt19937& random, int count) {
    const char* categories[] = {"Unassigned", "Work", "Home", "Gone", "@odd"};
    CalDate now{};
    CalDate::today(now.month, now.day, now.year);
    for (int i = 0; i < count; i++) {
        auto* r = new TodoRecord;
        // A narrow window of dates and priorities makes exact ties common.
        CalDate due = CalDate::addDays(now, static_cast<int>(random() % 40) - 20);
        r->month = due.month, r->day = due.day, r->year = due.year;
        r->priority = static_cast<int>(random() % 4);
        if (random() % 50 == 0)
            r->priority = static_cast<int>(random()); // damaged files hold anything
        r->completed = random() % 5 == 0 ? static_cast<unsigned char>(1 + random() % 3) : 0;
        r->setCategory(categories[random() % 5]);
        r->setDescription(("item " + std::to_string(i)).c_str());
        if (random() % 20 == 0)
            r->setDescription(std::string(50, 'r').c_str()); // runs on into the notes
        r->setNotes(std::string(random() % 300, 'n').c_str());
        todoStore.append(r);
    }
}

using ListOrder = UiTest;

TEST_F(ListOrder, MatchesPlainRebuildForRandomStores) {
    start();
    std::mt19937 random(20261121);
    for (int round = 0; round < 3; round++) {
        addRandomTodos(random, 1500);
        for (const char* filter : {"All", "Work", "@odd", "Unassigned"}) {
            for (int showCompleted : {0, 1}) {
                SCOPED_TRACE(std::string(filter) + " " + std::to_string(showCompleted));
                win->categoryFilter->clear();
                win->categoryFilter->add("All");
                win->categoryFilter->add(filter);
                win->categoryFilter->value(std::string(filter) == "All" ? 0 : 1);
                win->showCompletedButton->value(showCompleted);
                win->fillTodoBrowser();
                auto expected = referenceRebuild(std::string(filter) == "All" ? nullptr : filter,
                                                 showCompleted == 1);
                ASSERT_EQ(shown(win->todoBrowser), expected);
            }
        }
        // Remove a random share so later rounds mix old and new records.
        for (int i = todoStore.count() - 1; i >= 0; i -= 1 + static_cast<int>(random() % 3))
            todoStore.remove(todoStore.at(i));
    }
}

} // namespace
