#include "AcceptanceSupport.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <iterator>
#include <sys/wait.h>
#include <unistd.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

class ReloadAndFork : public Application {
protected:
    /// A synchronous and an asynchronous appender, each to a file of its own configuration, and one to a
    /// series common to both configurations.
    static std::string configuration(int number) {
        const std::string digit = std::to_string(number);
        std::string lines = "appender.series = FileAppender\nappender.series.dir = DIR\n"
                            "appender.series.fileNumber = " +
                            digit + "\nzav.log.AsynchronousDispatcher.overflow = block\n";
        for (const std::string kind : {"sync", "async"}) {
            const std::string appender = "appender." + kind + digit;
            lines += appender + " = SimpleFileAppender\n" + appender + ".dir = DIR\n" + appender +
                     ".asynchronous = " + (kind == "async" ? "true" : "false") + "\n";
        }
        return lines;
    }

    void reloadWith(int number) const { reload(configuration(number)); }

    std::ptrdiff_t count(const std::string& file, const std::string& word) const {
        const std::vector<std::string> words = lastWordsOf(file);
        return std::count(words.begin(), words.end(), word);
    }

    /// The configuration whose files contain a message: 0 or 1, or 2 if it is not in both files of exactly
    /// one.
    int configurationOf(const std::string& word) const {
        const std::array<std::ptrdiff_t, 4> counts = {count("sync0", word), count("async0", word),
                                                      count("sync1", word), count("async1", word)};
        if (counts == std::array<std::ptrdiff_t, 4>{1, 1, 0, 0}) {
            return 0;
        }
        return counts == std::array<std::ptrdiff_t, 4>{0, 0, 1, 1} ? 1 : 2;
    }
};

std::ptrdiff_t openDescriptors() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
}

/// What a child logs before a reload of its own, and after it.
std::string messageOf(int child, const std::string& when) {
    return "child" + std::to_string(child) + when;
}

} // namespace

TEST_F(ReloadAndFork, AChildLogsToOneConfigurationAndMayChangeItself) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizers lock their allocators during a fork";
#endif
    ASSERT_TRUE(init(configuration(0)));
    std::atomic<bool> isOver{false};
    std::thread logging([&isOver] {
        while (!isOver) {
            LoggerFactory::getLogger("net.parent").error("parent");
        }
    });
    std::thread changing([this, &isOver] {
        for (int number = 1; !isOver; number = 1 - number) {
            reloadWith(number);
        }
    });
    constexpr int CHILDREN = 30;
    for (int child = 0; child < CHILDREN; ++child) {
        const pid_t process = fork(); // a hang in either process is a failure
        if (process == 0) {
            Logger& net = LoggerFactory::getLogger("net");
            net.error(messageOf(child, "before"));
            bool isWritten = LogManager::flush();
            LogManager::reload(Util::Properties{{"appender.own", "SimpleFileAppender"},
                                                {"appender.own.asynchronous", "true"},
                                                {"appender.own.dir", directory_.path()}});
            net.error(messageOf(child, "after"));
            isWritten = LogManager::flush() && isWritten;
            LogManager::finish(); // whatever the other thread was doing
            _exit(isWritten ? EXIT_SUCCESS : EXIT_FAILURE);
        }
        int status = EXIT_FAILURE;
        ASSERT_EQ(waitpid(process, &status, 0), process);
        EXPECT_EQ(status, EXIT_SUCCESS);
    }
    isOver = true;
    changing.join();
    logging.join();
    for (int child = 0; child < CHILDREN; ++child) {
        EXPECT_NE(configurationOf(messageOf(child, "before")), 2) << child;
        EXPECT_EQ(count("own", messageOf(child, "after")), 1) << child;
    }
    EXPECT_THAT(lastWordsOf("own"), SizeIs(CHILDREN));
}

TEST_F(ReloadAndFork, FilesAreClosed) {
    ASSERT_TRUE(init(configuration(0)));
    const auto logAndChange = [this](int times) {
        for (int number = 1; number <= times; ++number) {
            LoggerFactory::getLogger("net").error("1");
            reloadWith(number % 2);
        }
    };
    logAndChange(4);
    const std::ptrdiff_t before = openDescriptors();
    logAndChange(100);
    EXPECT_EQ(openDescriptors(), before);
}
