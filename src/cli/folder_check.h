// What a companion checks before it reads a data folder: that it can go into the folder and
// that both data files there are regular files it may read. The stores meet a missing file with
// a note that they start empty, as the window should; a command should stop and say what is
// wrong instead.
#ifndef PINDLE_FOLDER_CHECK_H
#define PINDLE_FOLDER_CHECK_H

#include <string>

namespace FolderCheck {

// Changes into `dir`. False, with a one-line reason naming the folder or file, when that fails
// or a data file is missing, unreadable or not a regular file.
bool enter(const std::string& dir, std::string& error);

} // namespace FolderCheck

#endif
