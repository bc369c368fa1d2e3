#include "TestSupport.h"

#include "platform/Directory.h"
#include "platform/Files.h"
#include "platform/ThreadPriority.h"

#include <gmock/gmock.h>
#include <thread>

using namespace ZAV;
using testing::UnorderedElementsAre;

TEST(Files, RenamingNeverOverwrites) {
    const TestSupport::TemporaryDirectory directory;
    TestSupport::writeFile(directory / "a", "A");
    TestSupport::writeFile(directory / "b", "B");
    EXPECT_FALSE(Platform::renameFile(directory / "a", directory / "b"));
    EXPECT_EQ(TestSupport::readFile(directory / "a"), "A");
    EXPECT_EQ(TestSupport::readFile(directory / "b"), "B");
    EXPECT_TRUE(Platform::renameFile(directory / "a", directory / "c"));
    EXPECT_FALSE(TestSupport::fileExists(directory / "a"));
    EXPECT_EQ(TestSupport::readFile(directory / "c"), "A");
    EXPECT_FALSE(Platform::renameFile(directory / "missing", directory / "d"));
}

TEST(Files, RemovingLeavesDirectoriesAlone) {
    const TestSupport::TemporaryDirectory directory;
    std::filesystem::create_directory(directory / "inner");
    EXPECT_FALSE(Platform::removeFile(directory / "inner"));
    EXPECT_TRUE(TestSupport::fileExists(directory / "inner"));
}

TEST(Directory, ListsFilesOnlyAndFailsForWhatCannotBeListed) {
    const TestSupport::TemporaryDirectory directory;
    std::vector<std::string> names;
    EXPECT_TRUE(Platform::listFiles(directory.path(), names));
    EXPECT_TRUE(names.empty());
    TestSupport::writeFile(directory / "Upper", "");
    TestSupport::writeFile(directory / "lower", "");
    std::filesystem::create_directory(directory / "inner");
    EXPECT_TRUE(Platform::listFiles(directory.path(), names));
    EXPECT_THAT(names, UnorderedElementsAre("Upper", "lower"));
    EXPECT_FALSE(Platform::listFiles(directory / "missing", names));
    EXPECT_FALSE(Platform::listFiles(directory / "lower", names));
}

TEST(ThreadPriority, ARequestBeyondTheUsersRightsIsNoFailure) {
    std::thread([] {
        EXPECT_EQ(Platform::setCurrentThreadPriority(Platform::THREAD_PRIORITY_LOWEST_VALUE), 0);
        EXPECT_EQ(Platform::setCurrentThreadPriority(Platform::THREAD_PRIORITY_HIGHEST_VALUE), 0);
    }).join();
}
