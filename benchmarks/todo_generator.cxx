// The benchmark data generator. The proportions follow what a person keeps in a to-do list:
// notes are rare but, when present, a paragraph or two.
#include "todo_generator.h"

#include "cal_date.h"

#include <iterator>

namespace {
const char* const kCategories[] = {"Unassigned", "Work",   "Home", "Errands", "Health",
                                   "Finance",    "Garden", "Car",  "Reading", "Travel"};
const char* const kWords[] = {"call",  "the",    "bank",   "about",   "renew",  "passport",
                              "buy",   "milk",   "fix",    "leaking", "tap",    "send",
                              "tax",   "return", "book",   "dentist", "review", "quarterly",
                              "plan",  "for",    "garden", "shed",    "tyres",  "and",
                              "email", "Anna",   "report", "draft",   "notes",  "meeting"};
constexpr int kWordCount = static_cast<int>(std::size(kWords));
constexpr int kCategoryCount = static_cast<int>(std::size(kCategories));
} // namespace

TodoGenerator::TodoGenerator(unsigned seed) : random_(seed) {}

int TodoGenerator::uniform(int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random_);
}

// Words separated by spaces, cut to exactly `length` characters.
std::string TodoGenerator::words(int length) {
    std::string text;
    while (static_cast<int>(text.size()) < length) {
        if (!text.empty())
            text += uniform(0, 9) == 0 ? '\n' : ' ';
        text += kWords[uniform(0, kWordCount - 1)];
    }
    text.resize(static_cast<std::size_t>(length));
    return text;
}

TodoRecord* TodoGenerator::makeTodo() {
    auto* r = new TodoRecord;
    r->year = uniform(2024, 2028);
    r->month = uniform(1, 12);
    r->day = uniform(1, CalDate::daysInMonth(r->month, r->year));
    r->priority = uniform(0, 8);
    r->completed = uniform(0, 4) == 0 ? 1 : 0;
    r->setCategory(kCategories[uniform(0, kCategoryCount - 1)]);
    std::string description = words(uniform(10, 50));
    for (char& c : description) {
        if (c == '\n')
            c = ' ';
    }
    r->setDescription(description.c_str());
    if (uniform(0, 9) == 0)
        r->setNotes(words(uniform(200, 600)).c_str());
    return r;
}

void TodoGenerator::fillTodos(TodoStore& store, int count) {
    for (int i = 0; i < count; i++)
        store.append(makeTodo());
}

void TodoGenerator::fillCategories(CategoryStore& store) const {
    for (const char* name : kCategories) {
        if (store.find(name) != nullptr)
            continue;
        auto* r = new CategoryRecord;
        r->setName(name);
        store.append(r);
    }
}
