// Starts Pindle ToDo's window when the person answers "Open": the pindle_todo installed beside
// this command, run in the data folder (the current directory), where it keeps running after
// this command ends.
#ifndef PINDLE_WINDOW_START_H
#define PINDLE_WINDOW_START_H

#include <string>

namespace WindowStart {

// False, with a one-line reason, when the program could not be started.
bool inCurrentFolder(std::string& error);

} // namespace WindowStart

#endif
