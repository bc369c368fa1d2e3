#include "OwnSystem.h"

#include "log/ConfigurationMessage.h"
#include "log/LogException.h"
#include "log/LogMacros.h"
#include "log/SystemAppenders.h"

#include <atomic>
#include <sys/wait.h>
#include <syslog.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

constexpr char PATH[] = "/dev/log";
constexpr char TEXT_ALONE[] = "appender.s.layout = fields\nappender.s.fields = text\n";

class Syslog : public OwnSystem {
protected:
    Syslog() { registerSystemAppenders(); }

    /// What the C library puts in front of a text, but for the time.
    static std::string headOf(int priority, const std::string& ident) {
        return '<' + std::to_string(priority) + '>' + ident + '[' + std::to_string(getpid()) + "]: ";
    }
};

std::string withoutTime(std::string message) {
    const std::size_t length = std::string("Nov 26 05:40:00 ").size();
    return message.erase(message.find('>') + 1, length);
}

std::vector<std::string> withoutTimes(std::vector<std::string> messages) {
    for (std::string& message : messages) {
        message = withoutTime(message);
    }
    return messages;
}

/// Waits until a thread waits in a call of the system.
void awaitSleepOf(pid_t thread) {
    const std::string path = "/proc/self/task/" + std::to_string(thread) + "/stat";
    for (std::string stat; stat.find(") S ") == std::string::npos; stat = readFile(path)) {
        std::this_thread::yield();
    }
}

/// \return whether a message that a forked child logs, now, is not written but reported
bool isChildRefused() {
    const pid_t child = fork();
    if (child == 0) {
        RecordingListener listener;
        LogManager::registerCommandListener("EXCEPTION", &listener);
        LoggerFactory::getLogger("child").error("of the child", 0, "");
        const std::string reports = listener.arguments.empty() ? "" : listener.arguments.front();
        const bool isRefused =
            reports.find("Another thread was in syslog when this process was forked.") != std::string::npos;
        _exit(isRefused ? 1 : 0);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    return WEXITSTATUS(status) != 0;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool FORKS_FAIL = true;
#else
constexpr bool FORKS_FAIL = false;
#endif

} // namespace

TEST_F(Syslog, GetsEachMessageWithTheNameAndTheFacilityOfItsAppender) {
    DatagramSocket daemon(PATH);
    ASSERT_TRUE(init("logger.root.level = TRACE\n"
                     "appender.a = SyslogAppender\n"
                     "appender.a.ident = shop-1\n"
                     "appender.a.facility = local3\n"
                     "appender.a.layout = fields\n"
                     "appender.a.fields = logger level values\n"
                     "appender.b = SyslogAppender\n"
                     "appender.b.level = ERROR\n"));
    Logger& net = LoggerFactory::getLogger("net");
    for (const auto log :
         {&Logger::audit, &Logger::error, &Logger::warning, &Logger::info, &Logger::debug, &Logger::trace}) {
        (net.*log)("text", 7, "a.cpp");
    }
    net.config(ConfigurationMessage("set"));
    LogManager::finish();
    syslog(LOG_WARNING, "the program's own"); // which still has the name of the last appender
    const int local3 = 19 * 8;
    const int user = 1 * 8;
    const std::string self = program_invocation_short_name;
    const std::vector<std::string> messages = withoutTimes(daemon.receiveAll());
    ASSERT_THAT(messages, SizeIs(11));
    EXPECT_EQ(messages[0], headOf(local3 + 5, "shop-1") + "net AUDIT");
    EXPECT_THAT(messages[1], StartsWith(headOf(user + 5, self)));
    EXPECT_THAT(messages[1], EndsWith(" net a.cpp:7 AUDIT text"));
    EXPECT_EQ(messages[2], headOf(local3 + 3, "shop-1") + "net ERROR");
    EXPECT_THAT(messages[3], StartsWith(headOf(user + 3, self)));
    EXPECT_EQ(messages[4], headOf(local3 + 4, "shop-1") + "net WARNING");
    EXPECT_EQ(messages[5], headOf(local3 + 6, "shop-1") + "net INFO");
    EXPECT_EQ(messages[6], headOf(local3 + 7, "shop-1") + "net DEBUG");
    EXPECT_EQ(messages[7], headOf(local3 + 7, "shop-1") + "net TRACE");
    EXPECT_EQ(messages[8], headOf(local3 + 5, "shop-1") + "net -");
    EXPECT_THAT(messages[9], StartsWith(headOf(user + 5, self)));
    EXPECT_EQ(messages[10], headOf(user + 4, self) + "the program's own");
}

TEST_F(Syslog, GetsTextsAsTheyAreAndCutsOneThatTheKernelWouldNotTake) {
    DatagramSocket daemon(PATH);
    ASSERT_TRUE(init("appender.s = SyslogAppender\nappender.s.ident = shop\n" + std::string(TEXT_ALONE)));
    Logger& net = LoggerFactory::getLogger("net");
    const std::string head = headOf(8 + 3, "shop");
    const auto arrived = [&](const std::string& text) {
        net.error(text, 0, "");
        return withoutTime(daemon.receive()).substr(head.size());
    };
    EXPECT_EQ(arrived("100% %s%n %m"), "100% %s%n %m");
    EXPECT_EQ(arrived("two\nlines\n"), "two\nlines\n");
    EXPECT_EQ(arrived(std::string("a\0b\0", 4)), "a\\x00b\\x00");
    const std::string large(100 * 1024, 'x');
    EXPECT_EQ(arrived(large), large);
    std::string larger;
    while (larger.size() < 300 * 1024) {
        larger += "\xe2\x82\xac";
    }
    EXPECT_EQ(arrived(larger), larger.substr(0, 128 * 1024 - 2)); // of a euro sign, two bytes would be left
}

TEST_F(Syslog, RefusesWhatNoDaemonCouldTellApart) {
    const auto refusalOf = [](const std::string& key, const std::string& value) {
        return textThrownBy<LogException>([&] {
            LogManager::init(
                Util::Properties{{"appender.s", "SyslogAppender"}, {"appender.s." + key, value}});
        });
    };
    for (const char* const facility : {"kern", "USER", "local8", "1", ""}) {
        EXPECT_EQ(refusalOf("facility", facility),
                  std::string("Wrong value for the s.facility property: ") + facility);
    }
    for (const char* const ident : {"", "my shop", "shop:", "my/shop", "shop[1]", "caf\xc3\xa9"}) {
        EXPECT_EQ(refusalOf("ident", ident), std::string("Wrong value for the s.ident property: ") + ident);
    }
    EXPECT_EQ(textThrownBy<LogException>([] { registerSystemAppenders(); }),
              "Appender class SyslogAppender has already been registered.");
}

TEST_F(Syslog, IsWithinReachOfAForkedChildUnlessTheForkHadToGoByACall) {
    if (FORKS_FAIL) {
        GTEST_SKIP() << "the sanitizers lock their allocators during a fork";
    }
    DatagramSocket daemon(PATH);
    ASSERT_TRUE(init("appender.s = SyslogAppender\nappender.s.ident = shop\n" + std::string(TEXT_ALONE)));
    Logger& net = LoggerFactory::getLogger("net");
    net.error("of the parent", 0, "");
    EXPECT_FALSE(isChildRefused());
    EXPECT_THAT(daemon.receiveAll(), ElementsAre(EndsWith("of the parent"), EndsWith("of the child")));

    daemon.fill(); // and read nothing
    std::atomic<pid_t> writer{0};
    std::thread thread([&] {
        writer = gettid();
        net.error("that waits", 0, "");
    });
    while (writer == 0) {
        std::this_thread::yield();
    }
    awaitSleepOf(writer);
    EXPECT_TRUE(isChildRefused()); // it would wait for ever otherwise
    while (daemon.receive().find("that waits") == std::string::npos) {
    }
    thread.join();
    EXPECT_FALSE(isChildRefused()); // the call is over
}

TEST_F(Syslog, IsNotInTheMiddleOfACallWhereAForkCanWait) {
    if (FORKS_FAIL) {
        GTEST_SKIP() << "the sanitizers lock their allocators during a fork";
    }
    ASSERT_TRUE(init("appender.s = SyslogAppender\n")); // no daemon, so no call lasts
    std::atomic<bool> isOver{false};
    int refused = 0;
    inThreads(3, [&](int number) {
        if (number > 0) {
            while (!isOver) {
                LoggerFactory::getLogger("net").error("text", 0, "");
            }
            return;
        }
        for (int child = 0; child < 20; ++child) {
            refused += isChildRefused() ? 1 : 0;
        }
        isOver = true;
    });
    EXPECT_LT(refused, 10); // none, unless the machine has no time for a thread that is inside
}
