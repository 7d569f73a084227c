// pindle_sync --setup: a person's set-up from nothing, in one command. Takes the password (asked
// for on the terminal, unless the environment or a password file gives it), checks it and the
// collection with the server, keeps it in the desktop's keyring (or notes the password file),
// makes the data folder if it is missing and writes the settings file, private to the user.
#ifndef PINDLE_SYNC_SETUP_H
#define PINDLE_SYNC_SETUP_H

#include "sync_settings.h"

#include <string>

namespace SyncSetup {

// False, with the reason, when anything fails; nothing is written then.
bool run(SyncSettings settings, std::string& error);

} // namespace SyncSetup

#endif
