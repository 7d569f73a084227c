// The writer behind every save: each byte asked for reaches the file in order, however the
// requests fall against its stage, down to a file of one byte.
#include "staged_writer.h"
#include "support/temp_dir.h"

#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace {

using StagedWriterTest = TempDirTest;

TEST_F(StagedWriterTest, EveryByteReachesTheFileInOrder) {
    const std::vector<std::size_t> runs[] = {{1},         {2, 1},         {56, 56, 56},
                                             {300000, 1}, {3, 262143, 2}, {262144, 262144, 1}};
    for (const auto& sizes : runs) {
        int fd = open("out", O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        ASSERT_GE(fd, 0);
        StagedWriter writer(fd);
        std::string expected;
        for (std::size_t size : sizes) {
            unsigned char* room = writer.next(size);
            ASSERT_NE(room, nullptr);
            for (std::size_t i = 0; i < size; i++) {
                room[i] = static_cast<unsigned char>(expected.size() % 251);
                expected += static_cast<char>(room[i]);
            }
        }
        EXPECT_TRUE(writer.finish());
        close(fd);
        EXPECT_TRUE(readFile("out") == expected)
            << sizes.size() << " requests, the last " << sizes.back() << " bytes";
    }
}

} // namespace
