// The folder lock between processes: a second holder is turned away while the first lives, and
// the lock is free again once the first ends, even killed.
#include "folder_lock.h"
#include "support/temp_dir.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using FolderLockTest = TempDirTest;

// A child process that takes the lock, reports through the pipe and then waits to be killed.
pid_t holdInChild() {
    int ready[2];
    if (pipe(ready) != 0)
        return -1;
    pid_t child = fork();
    if (child == 0) {
        FolderLock lock(".");
        char state = lock.state() == FolderLock::State::Held ? 'h' : 'x';
        (void)!write(ready[1], &state, 1);
        pause();
        _exit(0);
    }
    char state = 0;
    close(ready[1]);
    bool held = read(ready[0], &state, 1) == 1 && state == 'h';
    close(ready[0]);
    return held ? child : -1;
}

TEST_F(FolderLockTest, OneHolderAtATimeUntilItsProcessEnds) {
    pid_t child = holdInChild();
    ASSERT_GT(child, 0);
    EXPECT_EQ(FolderLock(".").state(), FolderLock::State::Busy);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    FolderLock mine(".");
    EXPECT_EQ(mine.state(), FolderLock::State::Held);
    // Within one process too: each lock is its own open folder.
    EXPECT_EQ(FolderLock(".").state(), FolderLock::State::Busy);
}

TEST_F(FolderLockTest, AMissingFolderCannotBeLocked) {
    EXPECT_EQ(FolderLock("no-such-folder").state(), FolderLock::State::Unavailable);
}

} // namespace
