// Opening a data file without ever waiting on it. A named pipe or a socket where the file should
// be would block a load or a save for as long as nobody is at the other end, so either counts as
// a file that cannot be opened; so does a loop of symbolic links. Devices are used as they are.
// Also what makes a name made or renamed in the folder last through a crash.
#ifndef PINDLE_DATA_FILE_H
#define PINDLE_DATA_FILE_H

namespace DataFile {

// open(2) with `flags` (O_CLOEXEC added); returns the descriptor in blocking mode, or -1.
int open(const char* name, int flags, int mode = 0666);

// fsync(2) on the current folder: its entries (a file made, renamed or removed) reach the disk.
bool syncFolder();

} // namespace DataFile

#endif
