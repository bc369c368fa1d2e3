#include "EndedProcess.h"

using namespace ZAV;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using TestSupport::lastWordsIn;
using TestSupport::readFile;

namespace {

std::vector<std::string> numbersTo(int last) {
    std::vector<std::string> numbers;
    for (int number = 1; number <= last; ++number) {
        numbers.push_back(std::to_string(number));
    }
    return numbers;
}

/// The complete lines: the process may have ended in the middle of the last one.
std::string completeLinesOf(std::string text) {
    text.erase(text.rfind('\n') + 1);
    return text;
}

/// What is queued when a process ends.
class QueueAtProcessEnd : public TestSupport::EndedProcess {
protected:
    void runAndExpect(const std::string& program, const std::string& arguments) {
        ASSERT_EQ(run(program, arguments), 0) << errors();
    }
    void end(const std::string& way) { runAndExpect(ZAV_LOG_PROCESS_END_PROGRAM, way); }

    std::vector<std::string> queued() const { return lastWordsIn(readFile(directory_ / "queued")); }
    std::vector<std::string> synchronous() const { return lastWordsIn(readFile(directory_ / "sync0")); }
};

} // namespace

TEST_F(QueueAtProcessEnd, IsWrittenOnceWhenMainReturns) {
    end("return");
    EXPECT_EQ(queued(), numbersTo(10));
    EXPECT_EQ(synchronous(), numbersTo(10));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(QueueAtProcessEnd, IsWrittenOnceWhenTheProgramExits) {
    end("exit");
    EXPECT_EQ(queued(), numbersTo(10));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(QueueAtProcessEnd, IsWrittenWithWhatStaticObjectsLog) {
    end("static-object");
    EXPECT_EQ(queued(), numbersTo(12));
    EXPECT_EQ(synchronous(), numbersTo(12));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(QueueAtProcessEnd, IsWrittenThoughAListenerIsGone) {
    end("lost-listener");
    EXPECT_EQ(queued(), numbersTo(12));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(QueueAtProcessEnd, IsShownWhenAListenerOrAnAppenderExits) {
    for (const char* way : {"exit-in-listener", "exit-in-appender"}) {
        end(way);
        EXPECT_EQ(lastWordsIn(errors()), numbersTo(10)) << way;
        EXPECT_THAT(queued(), IsEmpty()) << way;
    }
}

/// What a thread logged before the queue was closed is in the file, and what it logged later is shown:
/// nothing is missing in between, or comes twice.
TEST_F(QueueAtProcessEnd, IsWrittenOrShownWhileOtherThreadsLog) {
    end("exit-while-threads-log");
    std::vector<std::string> words = lastWordsIn(readFile(directory_ / "queued"));
    const std::vector<std::string> shown = lastWordsIn(completeLinesOf(errors()));
    words.erase(words.begin(), words.begin() + 10); // what was logged before the threads started
    EXPECT_GE(words.size(), 8U * 100U);
    words.insert(words.end(), shown.begin(), shown.end());
    int next[8] = {};
    for (const std::string& word : words) {
        const std::size_t colon = word.find(':');
        ASSERT_EQ(std::stoi(word.substr(colon + 1)), next[std::stoi(word.substr(0, colon))]++) << word;
    }
}

/// The plugin logs, is unloaded and comes back.
TEST_F(QueueAtProcessEnd, IsWrittenOnceThoughTheLibraryWasUnloaded) {
    const std::string plugin = std::string("\"") + ZAV_LOG_PLUGIN + "\"";
    runAndExpect(ZAV_LOG_UNLOAD_PROGRAM, "leave " + plugin);
    EXPECT_EQ(queued(), numbersTo(10));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(QueueAtProcessEnd, IsEmptyAfterFinishAndUnloading) {
    const std::string plugin = std::string("\"") + ZAV_LOG_PLUGIN + "\"";
    runAndExpect(ZAV_LOG_UNLOAD_PROGRAM, "finish " + plugin);
    EXPECT_EQ(queued(), numbersTo(10));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(QueueAtProcessEnd, IsWrittenByTheParentOfAForkAndTheChildWritesItsOwn) {
    for (const char* way : {"exit", "finish"}) {
        std::filesystem::remove(directory_ / "queued");
        std::filesystem::remove(directory_ / "sync0");
        runAndExpect(ZAV_LOG_FORK_PROGRAM, way);
        std::vector<std::string> expected = numbersTo(10);
        expected.insert(expected.begin(), "child");
        EXPECT_EQ(queued(), expected) << way;
        expected = numbersTo(10);
        expected.insert(expected.begin() + 5, "child");
        EXPECT_EQ(synchronous(), expected) << way;
        // A leak sanitizer says a word of its own about the threads of a forked process.
        EXPECT_THAT(errors(), Not(HasSubstr("og message"))) << way;
    }
}
