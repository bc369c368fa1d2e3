#include "EndedProcess.h"

#include <iomanip>
#include <sstream>

using namespace ZAV;
using namespace ZAV::TestSupport;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

using Words = std::vector<std::string>;

Words numbersTo(int last) {
    Words numbers;
    for (int number = 1; number <= last; ++number) {
        numbers.push_back(std::to_string(number));
    }
    return numbers;
}

/// Messages queued when a process ends.
class QueueAtProcessEnd : public EndedProcess {
protected:
    void expectEnd(const std::string& program, const std::string& arguments) {
        std::filesystem::remove(directory_ / "queued");
        std::filesystem::remove(directory_ / "sync0");
        for (const char* file : {"together0", "together1"}) {
            std::filesystem::remove(directory_ / file);
        }
        ASSERT_EQ(run(program, arguments), 0) << errors();
    }
    void end(const std::string& way) { expectEnd(ZAV_LOG_PROCESS_END_PROGRAM, way); }

    Words queued() const { return lastWordsIn(readFile(directory_ / "queued")); }
    Words together() const {
        return lastWordsIn(readFile(directory_ / "together1") + readFile(directory_ / "together0"));
    }
    Words synchronous() const { return lastWordsIn(readFile(directory_ / "sync0")); }
};

} // namespace

TEST_F(QueueAtProcessEnd, IsWrittenOnceWithWhatStaticObjectsLogAndThoughAListenerIsGone) {
    for (const auto& [way, last] :
         {std::pair("return", 10), {"exit", 10}, {"static-object", 12}, {"lost-listener", 12}}) {
        end(way);
        EXPECT_EQ(queued(), numbersTo(last)) << way;
        EXPECT_EQ(together(), numbersTo(last)) << way;
        EXPECT_EQ(synchronous(), numbersTo(last)) << way;
        EXPECT_THAT(errors(), IsEmpty()) << way;
    }
}

TEST_F(QueueAtProcessEnd, IsShownWhenAListenerOrAnAppenderExits) {
    for (const char* way : {"exit-in-listener", "exit-in-appender"}) {
        end(way);
        Words shown = numbersTo(10);
        if (way == std::string("exit-in-appender")) {
            shown.insert(shown.begin(), "exit"); // was being given to the appender
        }
        EXPECT_EQ(lastWordsIn(errors()), shown) << way;
        EXPECT_THAT(queued(), IsEmpty()) << way;
    }
}

TEST_F(QueueAtProcessEnd, IsShownWithTheMessagesThatAListenerHadToDefer) {
    for (const char* way : {"exit-with-deferred-message", "exit-while-deferred-is-written"}) {
        end(way);
        EXPECT_THAT(lastWordsIn(errors()), testing::Contains("11")) << way;
    }
}

TEST_F(QueueAtProcessEnd, DoesNotHangTheConsumerThreadThatExits) {
    end("exit-in-consumer-thread");
}

/// What a thread logged before the queue was closed is in the file, and what it logged later is shown:
/// nothing is missing or duplicated in between.
TEST_F(QueueAtProcessEnd, IsWrittenOrShownWhileOtherThreadsLog) {
    end("exit-while-threads-log");
    std::string shown = errors();
    shown.erase(shown.rfind('\n') + 1); // the process may have ended in the middle of the last line
    Words words = queued();
    words.erase(words.begin(), words.begin() + 10); // what was logged before the threads started
    EXPECT_GE(words.size(), 8U * 100U);
    for (const std::string& word : lastWordsIn(shown)) {
        words.push_back(word);
    }
    int next[8] = {};
    for (const std::string& word : words) {
        const std::size_t colon = word.find(':');
        ASSERT_EQ(std::stoi(word.substr(colon + 1)), next[std::stoi(word.substr(0, colon))]++) << word;
    }
}

/// The plugin logs, is unloaded and loaded again.
TEST_F(QueueAtProcessEnd, IsWrittenOnceThoughTheLibraryWasUnloaded) {
    for (const std::string way : {"leave", "finish"}) {
        expectEnd(ZAV_LOG_UNLOAD_PROGRAM, way + " \"" + ZAV_LOG_PLUGIN + "\"");
        EXPECT_EQ(queued(), numbersTo(10)) << way;
        EXPECT_EQ(together(), numbersTo(10)) << way;
        EXPECT_THAT(errors(), IsEmpty()) << way;
    }
}

/// The plugin's memory is unmapped when its messages are written.
TEST_F(QueueAtProcessEnd, NeedsNothingOfAPluginThatIsLoadedAndUnloadedAgainAndAgain) {
    ASSERT_EQ(run(ZAV_LOG_PLUGIN_LOADS_PROGRAM, "\"" ZAV_LOG_LOGGING_PLUGIN "\""), 0) << errors();
    const std::vector<std::string> lines = linesIn(readFile(directory_ / "plugin"));
    constexpr int LOADS = 10'000;
    ASSERT_EQ(lines.size(), 4U * LOADS);
    auto line = lines.begin();
    for (int i = 0; i < LOADS; ++i) {
        std::ostringstream expected;
        expected << std::fixed << "format literal text " << i << ' ' << std::setprecision(2) << 0.5 * i
                 << "|template " << std::setw(3) << i << "|inline " << i << ' ' << std::defaultfloat
                 << std::setprecision(6) << 0.25 * i << " end|text " << i << '|';
        std::string texts;
        for (const auto end = line + 4; line != end; ++line) {
            ASSERT_THAT(*line, HasSubstr("plugin_loads_plugin.cpp:"));
            texts += line->substr(line->find("ERROR ") + 6) + '|';
        }
        ASSERT_EQ(texts, expected.str());
    }
}

TEST_F(QueueAtProcessEnd, IsWrittenByTheParentOfAForkAndTheChildWritesItsOwn) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer does not follow forks of a process with threads";
#elif defined(__SANITIZE_ADDRESS__)
    // If another thread allocates during the fork, the child hangs when it starts a thread.
    GTEST_SKIP() << "the address sanitizer's own allocator is locked in such a child";
#endif
    for (const char* way : {"exit", "finish"}) {
        expectEnd(ZAV_LOG_FORK_PROGRAM, way);
        Words expected = numbersTo(10);
        expected.insert(expected.begin() + 5, "child");
        EXPECT_THAT(queued(), testing::UnorderedElementsAreArray(expected)) << way;
        EXPECT_THAT(together(), testing::UnorderedElementsAreArray(expected)) << way;
        EXPECT_EQ(synchronous(), expected) << way;
        // A leak sanitizer may print a message about the threads of a forked process.
        EXPECT_THAT(errors(), Not(HasSubstr("og message"))) << way;
    }
}
