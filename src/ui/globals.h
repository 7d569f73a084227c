// The program's five global objects, built during static initialisation in a fixed order:
// the About box, the two stores (which load their files), then the two edit dialogs.
#ifndef PINDLE_GLOBALS_H
#define PINDLE_GLOBALS_H

#include "about_dialog.h"
#include "category_dialog.h"
#include "category_store.h"
#include "entry_dialog.h"
#include "todo_store.h"

extern AboutDialog aboutDialog;
extern TodoStore todoStore;
extern CategoryStore categoryStore;
extern CategoryDialog categoryDialog;
extern EntryDialog entryDialog;

#endif
