// The sync's own files written whole and for the owner alone, whatever their length, whatever
// the umask, and over a temporary file a crash left behind with other permissions.
#include "private_file.h"
#include "support/temp_dir.h"

#include <sys/stat.h>

namespace {

using PrivateFileTest = TempDirTest;

TEST_F(PrivateFileTest, WritesAnyTextWholeForTheOwnerOnly) {
    const mode_t umaskBefore = umask(0);
    const std::string texts[] = {"", "{", "{\"token\": \"t1\"}\n", std::string(1 << 20, 's')};
    for (const std::string& text : texts) {
        writeFile("state", "old");
        writeFile("state.new", "left by a crash");
        chmod("state.new", 0644);
        std::string error;
        ASSERT_TRUE(PrivateFile::write("state", text, error)) << error;
        struct stat info {};
        stat("state", &info);
        EXPECT_EQ(info.st_mode & 0777, 0600u) << text.size();
        EXPECT_EQ(readFile("state"), text);
        EXPECT_FALSE(exists("state.new"));
    }
    umask(umaskBefore);
}

} // namespace
