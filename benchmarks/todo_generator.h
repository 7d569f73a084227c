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
    // Appends every category the to-dos use that the store does not have yet.
    void fillCategories(CategoryStore& store) const;

private:
    std::string words(int length);
    int uniform(int low, int high);

    std::mt19937 random_;
};

#endif
