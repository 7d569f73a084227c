// Keeping a file that is not what the program expects before it goes over it or sets it aside:
// the version of a data file that another program wrote, a journal it cannot read. Its bytes go
// to a new file beside it whose name says what it is, why and when it was kept,
// "<name>.<why>-YYYYMMDD-HHMMSS" (why: "changed-elsewhere", "unreadable"), with "-2", "-3"...
// added if that name is taken.
#ifndef PINDLE_KEPT_COPY_H
#define PINDLE_KEPT_COPY_H

#include <cstddef>

namespace KeptCopy {

// Copies all that `fd`, open for reading on the file `name`, holds, and makes the copy durable.
// Returns false, leaving no copy behind, if it could not be made whole; otherwise `keptName`
// holds the copy's name.
bool make(int fd, const char* name, const char* why, char* keptName, std::size_t size);

} // namespace KeptCopy

#endif
