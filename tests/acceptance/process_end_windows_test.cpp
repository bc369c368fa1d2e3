#include "EndedProcess.h"

using namespace ZAV::TestSupport;

TEST_F(EndedProcess, NeitherCrashesNorHangs) {
    for (const char* way : {"return", "exit", "exit-while-threads-log", "static-object", "lost-listener",
                            "exit-in-listener", "exit-in-appender", "exit-in-consumer-thread"}) {
        EXPECT_EQ(run(ZAV_LOG_PROCESS_END_PROGRAM, way), 0) << way << ": " << errors();
    }
}

TEST_F(EndedProcess, NeitherCrashesNorHangsWithoutTheLibrary) {
    const std::string plugin = std::string("\"") + ZAV_LOG_PLUGIN + "\"";
    EXPECT_EQ(run(ZAV_LOG_UNLOAD_PROGRAM, "leave " + plugin), 0) << errors();
    std::filesystem::remove(directory_ / "queued");
    ASSERT_EQ(run(ZAV_LOG_UNLOAD_PROGRAM, "finish " + plugin), 0) << errors();
    EXPECT_THAT(lastWordsIn(readFile(directory_ / "queued")),
                testing::ElementsAre("1", "2", "3", "4", "5", "6", "7", "8", "9", "10"));
}
