// The program's global objects, built during static initialisation in a fixed order.
#ifndef PINDLE_GLOBALS_H
#define PINDLE_GLOBALS_H

#include "category_store.h"
#include "todo_store.h"

extern TodoStore todoStore;
extern CategoryStore categoryStore;

#endif
