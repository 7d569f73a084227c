// Program entry: the globals are built and the data files loaded before main runs; main claims
// the folder for this window, has save reports shown in alert boxes, mends the toolkit's large
// pastes, builds the main window and runs the event loop until the last window closes.
#include "data_report.h"
#include "folder_claim.h"
#include "globals.h"
#include "incremental_paste.h"
#include "todo_window.h"

#include <FL/Fl.H>
#include <FL/fl_ask.H>

#include <string>

// Read by the system's version command; kept in the binary although nothing refers to it.
[[gnu::used]] static const char kVersionTag[] = "$VER:pindle_todo 1.5b 23-May-2005";

// A user started from the desktop never sees stderr: what a save has to say is shown too. The
// box does not wrap, so each clause of a report gets its own line.
static void reportToUser(DataReport::Kind kind, const char* line) {
    DataReport::toStderr(kind, line);
    if (kind == DataReport::Kind::Unreadable || kind == DataReport::Kind::Recovery)
        return;
    std::string text = line;
    for (std::size_t at = text.find("; "); at != std::string::npos; at = text.find("; ", at))
        text.replace(at, 2, ";\n");
    fl_alert("%s", text.c_str());
}

int main() {
    // Held until the program ends: one window per folder. Companions work beside it. Where the
    // file system has no such locks the program runs unguarded, as it always did.
    FolderClaim claim(".", FolderClaim::Role::Window);
    if (claim.state() == FolderClaim::State::Busy) {
        fl_alert("Pindle ToDo is already open on the to-do files in this folder.\nSwitch to "
                 "that window, or close it and start Pindle ToDo again.");
        return 1;
    }
    DataReport::setSink(reportToUser);
    IncrementalPaste::install();
    TodoWindow todoWindow;
    return Fl::run();
}
