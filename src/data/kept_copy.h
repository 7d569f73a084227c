// Keeping the version of a data file that another program wrote, before a save goes over it: its
// bytes go to a new file beside it whose name says what it is and when it was kept,
// "<name>.changed-elsewhere-YYYYMMDD-HHMMSS", with "-2", "-3"... added if that name is taken.
#ifndef PINDLE_KEPT_COPY_H
#define PINDLE_KEPT_COPY_H

#include <cstddef>

namespace KeptCopy {

// Copies all that `fd`, open for reading on the file `name`, holds, and makes the copy durable.
// Returns false, leaving no copy behind, if it could not be made whole; otherwise `keptName`
// holds the copy's name.
bool make(int fd, const char* name, char* keptName, std::size_t size);

} // namespace KeptCopy

#endif
