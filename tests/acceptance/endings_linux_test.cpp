#include "EndedProcess.h"

#include <filesystem>
#include <set>

using namespace ZAV;
using namespace ZAV::TestSupport;

namespace {

/// Processes that end at a difficult moment for the library.
class HardEnding : public EndedProcess {
protected:
    /// Whatever the process logged must be in the file, or be shown. A process that does not end is killed,
    /// which is a failure.
    void expectNothingLost(const std::string& way, const std::set<std::string>& more = {}) {
        for (const auto& entry : std::filesystem::directory_iterator(directory_.path())) {
            std::filesystem::remove(entry);
        }
        EXPECT_EQ(run("timeout", "-s KILL 60 " ZAV_LOG_ENDINGS_PROGRAM " " + way), 0) << way << "\n"
                                                                                      << errors();
        std::set<std::string> kept = more;
        if (std::filesystem::is_regular_file(directory_ / "queued")) {
            const auto words = lastWordsIn(readFile(directory_ / "queued"));
            kept.insert(words.begin(), words.end());
        }
        const auto shown = lastWordsIn(errors());
        kept.insert(shown.begin(), shown.end());
        std::string lost;
        std::istringstream accepted(readFile(directory_ / "accepted"));
        for (std::string word; std::getline(accepted, word);) {
            lost += kept.count(word) == 0 ? " " + word : "";
        }
        EXPECT_EQ(lost, "") << way;
        kept_ = kept;
    }

    std::set<std::string> kept_;
};

} // namespace

TEST_F(HardEnding, LosesNothingWhenAnAppenderOrAListenerExits) {
    for (const char* way : {"exit-in-appender", "exit-in-consumer"}) {
        expectNothingLost(way);
        EXPECT_EQ(kept_.count("delivered"), 1U) << way; // was being delivered
    }
    expectNothingLost("exit-in-listener");
}

TEST_F(HardEnding, LosesNothingWhenTwoThreadsEndTheProcess) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the C library frees a list that the sanitizers' own functions make longer, at each end";
#endif
    for (int i = 0; i < 5; ++i) {
        expectNothingLost("return-while-the-consumer-exits");
    }
}

TEST_F(HardEnding, LosesNothingWhereverTheConsumerIs) {
    for (int lock = 1; lock <= 30; ++lock) {
        expectNothingLost("exit-while-the-consumer-pauses " + std::to_string(lock));
    }
}

TEST_F(HardEnding, ComesThoughSomebodyIsStuck) {
    for (const char* way : {"return-while-a-file-is-stuck", "return-while-a-listener-waits",
                            "return-while-a-command-waits", "return-while-a-logger-is-stuck"}) {
        expectNothingLost(way);
    }
}

TEST_F(HardEnding, ComesWhenOnlyTheConsumerIsLeft) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer has a thread of its own";
#elif defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the leak sanitizer counts what threads of the parent held as lost in the child";
#endif
    for (const char* way : {"main-thread-ends", "main-thread-ends-prompt", "main-thread-ends-last",
                            "thread-of-child-returns"}) {
        expectNothingLost(way);
    }
}

TEST_F(HardEnding, ComesInAChildOfTheConsumerWhichLeavesTheBatchToItsParent) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer does not follow forks of a process with threads";
#elif defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the leak sanitizer counts what threads of the parent held as lost in the child";
#endif
    expectNothingLost("consumer-forks");
    const auto words = lastWordsIn(readFile(directory_ / "queued"));
    EXPECT_EQ(words.size(), std::set<std::string>(words.begin(), words.end()).size()); // no duplicates
}

TEST_F(HardEnding, OverflowBlocksThoughTheConsumerWantsALoggerThatIsBusy) {
    expectNothingLost("block");
}
