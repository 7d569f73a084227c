// Program entry: the globals are built and the data files loaded before main runs; main takes
// the folder's lock, has save reports shown in alert boxes, builds the main window and runs the
// event loop until the last window closes.
#include "folder_lock.h"
#include "globals.h"
#include "save_report.h"
#include "todo_window.h"

#include <FL/Fl.H>
#include <FL/fl_ask.H>

// Read by the system's version command; kept in the binary although nothing refers to it.
[[gnu::used]] static const char kVersionTag[] = "$VER:pindle_todo 1.5b 23-May-2005";

// A user started from the desktop never sees stderr: what a save has to say is shown too.
static void alertUser(const char* message) {
    fl_alert("%s", message);
}

int main() {
    // Held until the program ends. Where the file system has no such locks the program runs
    // unguarded, as it always did.
    FolderLock lock(".");
    if (lock.state() == FolderLock::State::Busy) {
        fl_alert("Pindle ToDo or pindle_sync is already working on the to-do files in this "
                 "folder.\nClose it, then start Pindle ToDo again.");
        return 1;
    }
    SaveReport::setHandler(alertUser);
    TodoWindow todoWindow;
    return Fl::run();
}
