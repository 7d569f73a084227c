// The benchmark data generator. The proportions follow what a person keeps in a to-do list:
// notes are rare but, when present, a paragraph or two.
#include "todo_generator.h"

#include "cal_date.h"

#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <memory>
#include <unistd.h>

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

bool TodoGenerator::writeTodoFile(const char* name, int count, bool holes) {
    const int fd = open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    constexpr std::size_t kSize = TodoRecord::kFileSize, kNotesAt = 117, kLinkAt = kSize - 4;
    std::unique_ptr<unsigned char[]> block(new unsigned char[kSize]);
    bool written = true;
    for (int i = 0; i < count && written; i++) {
        std::unique_ptr<TodoRecord> todo(makeTodo());
        todo->encode(block.get(), i + 1 == count);
        // Everything up to the notes' terminator, and the link slot; the rest is zeros.
        const auto* notes = reinterpret_cast<const char*>(block.get() + kNotesAt);
        const std::size_t used = holes ? kNotesAt + std::strlen(notes) + 1 : kSize;
        const auto at = static_cast<off_t>(std::uint64_t{kSize} * static_cast<unsigned>(i));
        written = pwrite(fd, block.get(), used, at) == static_cast<ssize_t>(used) &&
                  pwrite(fd, block.get() + kLinkAt, 4, at + static_cast<off_t>(kLinkAt)) == 4;
    }
    written =
        written &&
        ftruncate(fd, static_cast<off_t>(std::uint64_t{kSize} * static_cast<unsigned>(count))) == 0;
    // Else the next measure's first sync would write all of it back.
    written = written && fdatasync(fd) == 0;
    return close(fd) == 0 && written;
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
