#include "TestSupport.h"

#include "platform/Files.h"

using namespace ZAV;
using namespace ZAV::TestSupport;
using testing::UnorderedElementsAre;

TEST(Files, RenamingNeverOverwrites) {
    const TemporaryDirectory directory;
    writeFile(directory / "a", "A");
    writeFile(directory / "b", "B");
    EXPECT_FALSE(Platform::renameFile(directory / "a", directory / "b"));
    EXPECT_EQ(readFile(directory / "a"), "A");
    EXPECT_EQ(readFile(directory / "b"), "B");
    EXPECT_TRUE(Platform::renameFile(directory / "a", directory / "c"));
    EXPECT_FALSE(fileExists(directory / "a"));
    EXPECT_EQ(readFile(directory / "c"), "A");
    EXPECT_FALSE(Platform::renameFile(directory / "missing", directory / "d"));
}

TEST(Directory, ListsFilesOnlyAndFailsForWhatCannotBeListed) {
    const TemporaryDirectory directory;
    std::vector<std::string> names;
    EXPECT_TRUE(Platform::listFiles(directory.path(), names));
    EXPECT_TRUE(names.empty());
    writeFile(directory / "Upper", "");
    writeFile(directory / "lower", "");
    std::filesystem::create_directory(directory / "inner");
    EXPECT_TRUE(Platform::listFiles(directory.path(), names));
    EXPECT_THAT(names, UnorderedElementsAre("Upper", "lower"));
    EXPECT_FALSE(Platform::listFiles(directory / "missing", names));
    EXPECT_FALSE(Platform::listFiles(directory / "lower", names));
}
