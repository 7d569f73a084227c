// Scattered reads get every piece's bytes, through the kernel's ring and, in a process that the
// kernel refuses one (as a container's seccomp profile may), through pread alone; a piece past
// the end of the file fails the run without spoiling the others. Records live in blocks of
// their own: slots are distinct, aligned, spread over blocks and used again once given back.
#include "record_arena.h"
#include "scattered_read.h"
#include "support/temp_dir.h"

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <set>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using ScatteredReadTest = TempDirTest;

// From now on this process gets ENOSYS for io_uring_setup.
void refuseRings() {
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_io_uring_setup, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog program{static_cast<unsigned short>(std::size(filter)), filter};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
        _exit(2);
}

unsigned char byteAt(std::size_t at) {
    return static_cast<unsigned char>(at % 251);
}

// More pieces than the ring takes at once, the last of them running past the end of the file;
// then two pieces, which are read alone.
void readPieces(int fd, std::size_t fileSize) {
    ScatteredRead reader(fd);
    EXPECT_TRUE(reader.run()) << "nothing queued";
    constexpr std::size_t kPiece = 321, kStride = 160, kPieces = 600;
    std::vector<unsigned char> out(kPieces * kPiece);
    for (std::size_t i = 0; i < kPieces; i++)
        reader.add(i * kStride, &out[i * kPiece], kPiece);
    unsigned char beyond[4] = {};
    reader.add(fileSize - 2, beyond, sizeof beyond);
    EXPECT_FALSE(reader.run());
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < kPieces; i++) {
        for (std::size_t b = 0; b < kPiece; b++)
            wrong += out[i * kPiece + b] != byteAt(i * kStride + b);
    }
    EXPECT_EQ(wrong, 0u);
    unsigned char two[2][3] = {};
    reader.add(7, two[0], 3);
    reader.add(fileSize - 3, two[1], 3);
    EXPECT_TRUE(reader.run());
    EXPECT_EQ(std::vector<int>({two[0][2], two[1][2]}),
              std::vector<int>({byteAt(9), byteAt(fileSize - 1)}));
}

TEST_F(ScatteredReadTest, EveryPieceArrivesWithOrWithoutTheKernelsRing) {
    std::string bytes(100000, '\0');
    for (std::size_t i = 0; i < bytes.size(); i++)
        bytes[i] = static_cast<char>(byteAt(i));
    writeFile("file", bytes);
    const int fd = open("file", O_RDONLY);
    readPieces(fd, bytes.size());
    const pid_t child = fork();
    if (child == 0) {
        refuseRings();
        readPieces(fd, bytes.size());
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "without a ring";
    close(fd);
}

TEST(RecordArenaTest, SlotsAreDistinctAlignedAndUsedAgain) {
    RecordArena arena(400);
    const std::size_t perBlock = RecordArena::kBlockSize / 400;
    std::vector<void*> slots;
    std::set<std::uintptr_t> blocks;
    for (std::size_t i = 0; i < perBlock + 2; i++) {
        slots.push_back(arena.take());
        const auto at = reinterpret_cast<std::uintptr_t>(slots.back());
        EXPECT_EQ(at % alignof(std::max_align_t), 0u);
        blocks.insert(at / RecordArena::kBlockSize);
    }
    EXPECT_EQ(std::set<void*>(slots.begin(), slots.end()).size(), slots.size());
    EXPECT_EQ(blocks.size(), 2u);
    arena.give(slots[3]);
    arena.give(slots[7]);
    EXPECT_EQ(arena.take(), slots[7]);
    EXPECT_EQ(arena.take(), slots[3]);
}

} // namespace
