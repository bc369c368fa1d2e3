#include "AcceptanceSupport.h"

#include "log/LogSession.h"

#include <filesystem>
#include <thread>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

class FailureNotices : public Application {
protected:
    static std::string lineOf(const std::string& appender, const std::string& directory) {
        return "zav-log: appender " + appender + ": Failed to open file " + directory + "/" + appender +
               ". Are you sure that the directory exists?\n";
    }

    const std::string missing_ = directory_ / "missing";
};

} // namespace

TEST_F(FailureNotices, TellOfAnAppenderThatBeginsToFail) {
    writeProperties(
        "appender.s = SimpleFileAppender\nappender.s.dir = DIR/missing\n"
        "appender.batch = SimpleFileAppender\nappender.batch.dir = DIR/missing\n"
        "appender.batch.asynchronous = true\nappender.batch.flush = batch\n"
        "appender.batch.level = ERROR\nappender.fine = SimpleFileAppender\nappender.fine.dir = DIR\n"
        "zav.log.AsynchronousDispatcher.waitingPeriod = 3600\n");
    StandardErrorCapture standardError;
    {
        const LogSession session(directory_ / "app.properties");
        Logger& net = LoggerFactory::getLogger("net");
        const auto logInRounds = [&net](const std::string& text) {
            for (int round = 0; round < 3; ++round) {
                net.error(text);
                net.warning(text);
                LogManager::flush();
            }
        };
        logInRounds("1");
        std::filesystem::create_directory(missing_);
        logInRounds("2");
        std::filesystem::remove_all(missing_);
        logInRounds("3");
        RecordingListener listener;
        LogManager::registerCommandListener("EXCEPTION", &listener);
        std::filesystem::create_directory(missing_);
        logInRounds("4");
        std::filesystem::remove_all(missing_);
        logInRounds("5");
        EXPECT_THAT(listener.arguments, SizeIs(9));
        LogManager::unregisterCommandListener("EXCEPTION");
        logInRounds("6"); // it was already failing
    }
    EXPECT_TRUE(LogManager::init(directory_ / "app.properties"));
    LoggerFactory::getLogger("net").error("7"); // without a session
    LogManager::flush();
    EXPECT_EQ(standardError.text(), lineOf("s", missing_) + lineOf("batch", missing_) +
                                        lineOf("s", missing_) + lineOf("batch", missing_));
}

TEST_F(FailureNotices, TellOfFilesThatCannotBePacked) {
    const std::string rolled = directory_ / "app.log.20260101T000000Z";
    writeFile(rolled, "a\n");
    std::filesystem::create_directory(rolled + ".gz.part");
    writeProperties(
        "appender.app = RollingFileAppender\nappender.app.dir = DIR\nappender.app.compress = gzip\n");
    StandardErrorCapture standardError;
    const std::uint64_t before = LogManager::statistics().failed;
    {
        const LogSession session(directory_ / "app.properties");
        while (LogManager::statistics().failed == before) { // a hang here is a failure
            std::this_thread::yield();
        }
    }
    const std::string shown =
        std::filesystem::path(directory_.path()).make_preferred().string() + "/app.log.20260101T000000Z";
    EXPECT_EQ(standardError.text(), "zav-log: appender app: Unable to pack the file: " + shown +
                                        ": Unable to write " + shown + ".gz.part\n");
}
