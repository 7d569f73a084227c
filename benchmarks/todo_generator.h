// Seeded, realistic to-do data for the benchmarks: short descriptions, mostly empty notes, about
// ten categories, a fifth completed, due dates spread over a few years.
#ifndef PINDLE_TODO_GENERATOR_H
#define PINDLE_TODO_GENERATOR_H

#include "category_store.h"
#include "todo_store.h"

#include <random>
#include <string>

class TodoGenerator {
public:
    // The same seed gives the same records, so runs and branches compare like with like.
    explicit TodoGenerator(unsigned seed = 5);

    // A fresh heap record, ready for TodoStore::append.
    TodoRecord* makeTodo();
    void fillTodos(TodoStore& store, int count);
    // Writes `count` fresh to-dos into the file `name`, as a save lays them out, and makes it
    // durable; with `holes`, each record's run of zeros is left as a hole, so that 50,000 to-dos
    // make a file of 1.6 GB in a moment and take a few megabytes of disk (but ext4 keeps an extent
    // per hole, which slows a save into the file). False if it could not be written.
    bool writeTodoFile(const char* name, int count, bool holes = true);
    // Appends every category the to-dos use that the store does not have yet.
    void fillCategories(CategoryStore& store) const;

private:
    std::string words(int length);
    int uniform(int low, int high);

    std::mt19937 random_;
};

#endif
