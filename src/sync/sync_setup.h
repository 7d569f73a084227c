// pindle_sync --setup: a person's set-up from nothing, in one command. Takes the password (asked
// for on the terminal, unless the environment or a password file gives it), finds the task list
// from the URL given (the list itself, or any URL on the server: the person's lists are found
// there, and one is chosen, by --task-list, on the terminal, or made when there is none), keeps
// the password in the desktop's keyring (or notes the password file), makes the data folder if it
// is missing and writes the settings file, private to the user, naming the list found.
#ifndef PINDLE_SYNC_SETUP_H
#define PINDLE_SYNC_SETUP_H

#include "sync_settings.h"

#include <string>

namespace SyncSetup {

// The name a task list made for the person gets.
constexpr const char* kNewListName = "Pindle ToDo";

// `taskList`, when given, names the list to take where the server has several: its display
// name or its URL. False, with the reason, when anything fails; nothing is written then.
bool run(SyncSettings settings, const std::string& taskList, std::string& error);

} // namespace SyncSetup

#endif
