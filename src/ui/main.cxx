// Program entry: the globals are built and the data files loaded before main runs; main mends
// the toolkit's large pastes, builds the main window and runs the event loop until the last
// window closes.
#include "globals.h"
#include "incremental_paste.h"
#include "todo_window.h"

#include <FL/Fl.H>

// Read by the system's version command; kept in the binary although nothing refers to it.
[[gnu::used]] static const char kVersionTag[] = "$VER:pindle_todo 1.5b 23-May-2005";

int main() {
    IncrementalPaste::install();
    TodoWindow todoWindow;
    return Fl::run();
}
