// The category store: the "Unassigned" seed on a first run only, "cat.db" byte for byte,
// failures that end the program, and lookup by exact name.
#include "category_store.h"
#include "support/store_helpers.h"
#include "support/temp_dir.h"

#include <memory>
#include <vector>

namespace {

using CategoryFile = TempDirTest;
using Store = ScopedStore<CategoryStore>;

CategoryRecord* named(const std::string& name) {
    auto* r = new CategoryRecord;
    r->setName(name.c_str());
    return r;
}

std::vector<std::string> names(const CategoryStore& store) {
    std::vector<std::string> out;
    for (int i = 0; i < store.count(); i++)
        out.emplace_back(store.at(i)->name);
    return out;
}

TEST_F(CategoryFile, MissingFileSeedsUnassignedWithoutCreatingTheFile) {
    testing::internal::CaptureStderr();
    Store store;
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "could not open file cat.db\nskipping over reading record\n");
    EXPECT_EQ(names(store), (std::vector<std::string>{"Unassigned"}));
    EXPECT_FALSE(exists("cat.db"));
    store.save();
    EXPECT_TRUE(readFile("cat.db") == categoryBytes("Unassigned"));
}

TEST_F(CategoryFile, ExistingFilesLoadAsTheyAre) {
    struct Case {
        std::string bytes;
        std::vector<std::string> expected;
    } cases[] = {
        {"", {}},
        {std::string(55, 'x'), {}},
        {categoryBytes("Home", 7) + categoryBytes("Work", 0x80000000u), {"Home", "Work"}},
        {categoryBytes("Home", 1) + std::string(10, '\0'), {"Home"}},
        {std::string(52, 'N') + beInt(0), {std::string(51, 'N')}},
    };
    for (const auto& c : cases) {
        writeFile("cat.db", c.bytes);
        testing::internal::CaptureStderr();
        Store store;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(names(store), c.expected) << c.bytes.size();
    }
}

TEST_F(CategoryFile, SaveWritesNamesZerosAndLinkSlots) {
    Store store;
    store.remove(store.head);
    CategoryRecord* garbage = named(std::string(51, 'g'));
    garbage->setName("Home"); // leaves 'g' bytes after the terminator in memory
    store.append(garbage);
    store.append(named(std::string(50, 'L')));
    store.append(named("Home"));
    store.save();
    std::string file = readFile("cat.db");
    ASSERT_EQ(file.size(), 3 * 56u);
    for (int i : {0, 1})
        EXPECT_NE(file.substr(56 * i + 52, 4), std::string(4, '\0')) << i;
    file.replace(52, 4, beInt(1));
    file.replace(56 + 52, 4, beInt(1));
    EXPECT_TRUE(file == categoryBytes("Home", 1) + categoryBytes(std::string(50, 'L'), 1) +
                            categoryBytes("Home", 0));
    EXPECT_EQ(file[56 + 50], '\0');
}

TEST_F(CategoryFile, FindIsExactCaseSensitiveAndPrefersTheEarliest) {
    writeFile("cat.db", categoryBytes("Home") + categoryBytes("Work") + categoryBytes("Home") +
                            categoryBytes(""));
    Store store;
    EXPECT_EQ(store.find("Home"), store.at(0));
    EXPECT_EQ(store.find("Work"), store.at(1));
    EXPECT_EQ(store.find(""), store.at(3));
    for (const char* missing : {"home", "HOME", "Hom", "Home ", "Unassigned"})
        EXPECT_EQ(store.find(missing), nullptr) << missing;
}

TEST_F(CategoryFile, UnassignedHasNoSpecialStatusInTheStore) {
    Store store;
    store.append(named("Unassigned"));
    store.remove(store.find("Unassigned"));
    EXPECT_EQ(names(store), (std::vector<std::string>{"Unassigned"}));
    store.remove(store.head);
    EXPECT_EQ(store.count(), 0);
    auto orphan =
        std::make_unique<CategoryRecord>(); // freed here: a double free would show under ASan
    store.remove(orphan.get());
    store.save();
    EXPECT_EQ(readFile("cat.db").size(), 0u);
}

using CategoryFileDeath = CategoryFile;

TEST_F(CategoryFileDeath, UnwritableFileEndsWithStatus200) {
    Store store; // seeded with "Unassigned"
    std::filesystem::create_directory("cat.db");
    EXPECT_EXIT(store.save(), testing::ExitedWithCode(200), "^could not open file cat.db\n$");
    std::filesystem::remove("cat.db");
    std::filesystem::create_symlink("/dev/full", "cat.db");
    EXPECT_EXIT(store.save(), testing::ExitedWithCode(200), "^could not write records!\n$");
}

} // namespace
