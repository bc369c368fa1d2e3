#include "ControlSupport.h"

#include "log/ControlServer.h"
#include "log/LoggerFactory.h"

#include <cstdlib>
#include <memory>

using namespace ZAV;
using namespace ZAV::Log;
using testing::HasSubstr;

namespace {

class Ctl : public TestSupport::Control {
protected:
    /// \return the exit code
    int ctl(const std::string& arguments) const { return run("ctl " + arguments); }

    int run(const std::string& arguments) const {
        const std::string command = std::string("cd . && \"") + ZAV_LOG_PROGRAM + "\" " + arguments +
                                    " > \"" + (directory_ / "out") + "\" 2> \"" + (directory_ / "err") + "\"";
        const int status = std::system(command.c_str());
        const int shift = 256; // of the code in the status, where it is not the code itself
        return status >= shift ? status / shift : status;
    }
    std::string out() const { return TestSupport::readFile(directory_ / "out"); }
    std::string err() const { return TestSupport::readFile(directory_ / "err"); }
};

} // namespace

TEST_F(Ctl, AsksARunningProgram) {
    LoggerFactory::getLogger("with blank");
    TestSupport::RecordingListener listener;
    LogManager::registerCommandListener("heard", &listener);
    auto server = std::make_unique<ControlServer>(address_);
    const std::string address = "\"" + address_ + "\" ";
    EXPECT_EQ(ctl(address + "level \"with blank\" DEBUG"), 0) << err();
    EXPECT_EQ(out(), "");
    EXPECT_EQ(ctl(address + "loggers"), 0) << err();
    EXPECT_EQ(out(), "root WARNING 0\nwith blank DEBUG 0\n");
    EXPECT_EQ(ctl(address + "command heard [1,2]"), 0) << err();
    EXPECT_EQ(ctl("--color never " + address + "command heard -x --help"), 0) << err();
    EXPECT_EQ(out() + err(), "");
    EXPECT_EQ(ctl(address + "command nobody x"), 0);
    EXPECT_EQ(out() + err(), "zav-log: nobody listens to 'nobody'\n");
    EXPECT_EQ(ctl(address + "level root info"), 0) << err();
    EXPECT_EQ(ctl(address + "level root LOUD"), 1);
    EXPECT_EQ(out() + err(), "There is no 'LOUD' LogLevel defined. "
                             "The levels are AUDIT, ERROR, WARNING, INFO, DEBUG and TRACE.\n");
    EXPECT_EQ(ctl(address + "level \"with blank\" debug --for \"10 min\""), 0) << err();
    EXPECT_EQ(ctl(address + "loggers --color always"), 0) << err();
    EXPECT_EQ(out(), "root INFO 0\nwith blank \x1b[2mDEBUG\x1b[0m 0\n");
    server.reset(); // and with it the thread that the listener ran in
    EXPECT_THAT(listener.arguments, testing::ElementsAre("[1,2]", "-x --help"));
}

TEST_F(Ctl, HasARunningProgramReadItsConfiguration) {
    const std::string file = directory_ / "app with blank.properties";
    TestSupport::writeFile(file, "logger.net.level = INFO\n");
    const ControlServer server(address_);
    const std::string reload = "\"" + address_ + "\" reload";
    EXPECT_EQ(ctl(reload), 1);
    EXPECT_EQ(out() + err(), "The library is not initialised.\n");
    LogManager::init(file);
    TestSupport::writeFile(file, "logger.net.level = TRACE\n");
    EXPECT_EQ(ctl(reload), 0) << err();
    EXPECT_EQ(out(), "");
    EXPECT_EQ(LoggerFactory::getLogger("net").getLevel(), Level::TRACE);
    const std::string other = directory_ / "other.properties";
    TestSupport::writeFile(other, "logger.net.level = DEBUG\n");
    EXPECT_EQ(ctl(reload + " \"" + other + "\""), 0) << err();
    EXPECT_EQ(LoggerFactory::getLogger("net").getLevel(), Level::DEBUG);
    EXPECT_EQ(ctl(reload + " \"" + file + "\""), 0) << err();
    EXPECT_EQ(LoggerFactory::getLogger("net").getLevel(), Level::TRACE);
    TestSupport::writeFile(file, "appender.a = Nothing\n");
    EXPECT_EQ(ctl(reload), 1);
    EXPECT_EQ(err(), "No factory registered for appenderName = a, appenderClass = Nothing\n");
    EXPECT_EQ(LoggerFactory::getLogger("net").getLevel(), Level::TRACE);
}

TEST_F(Ctl, ExplainTakesTheLevelsOfTheRunningProgram) {
    Util::Properties properties;
    properties["appender.out"] = "StdoutAppender";
    properties["appender.out.level"] = "ERROR";
    LogManager::init(properties);
    const std::string file = directory_ / "app.properties";
    TestSupport::writeFile(file, "logger.net.level = INFO\nappender.out = StdoutAppender\n"
                                 "appender.out.level = ERROR\nappender.gone = StdoutAppender\n");
    LoggerFactory::getLogger("net");
    const ControlServer server(address_);
    const std::string question = "explain \"" + file + "\" net.tcp Debug --at \"" + address_ + "\"";
    EXPECT_EQ(run(question), 1) << err();
    EXPECT_THAT(out(), HasSubstr("logger: stops (its level is WARNING)\n"));
    LogManager::setLevelFor("net", Level::DEBUG, Util::TimeUtils::Time(1, Util::TimeUtils::HOUR));
    EXPECT_EQ(run(question), 0) << err();
    EXPECT_THAT(out(), HasSubstr("logger: passes\n"));
    EXPECT_THAT(out(), HasSubstr("out: written to standard output\n"));
    EXPECT_THAT(err(), HasSubstr("has no appender 'gone'"));
    EXPECT_EQ(run("explain \"" + file + "\" --at \"" + (directory_ / "nobody") + "\""), 1);
}

TEST_F(Ctl, ExplainMakesNoMoreLoggersThanItHasRoomFor) {
    for (int i = 0; i < 40000; ++i) {
        LoggerFactory::getLogger("many" + std::to_string(i));
    }
    const std::string file = directory_ / "app.properties";
    TestSupport::writeFile(file, "appender.out = StdoutAppender\n");
    const ControlServer server(address_);
    EXPECT_EQ(run("explain \"" + file + "\" many0 --at \"" + address_ + "\""), 0) << err();
    EXPECT_THAT(err(), HasSubstr("has too many loggers; all but the first "));
}

TEST_F(Ctl, TellsWrongUsageBeforeItAsks) {
    const std::string nobody = "\"" + address_ + "\" ";
    for (const char* const request :
         {"", "nonsense", "level root", "level a b DEBUG", "flush now", "command", "command \"two words\"",
          "level a DEBUG --for ever", "level a DEBUG --for 10fortnights", "flush --for 10min", "reload a b",
          "reload \"\""}) {
        EXPECT_EQ(ctl(nobody + request), 2) << request;
        EXPECT_THAT(err(), HasSubstr("zav-log: ")) << request;
    }
    EXPECT_EQ(ctl(nobody + "loggers"), 1);
    EXPECT_THAT(err(), HasSubstr(address_));
}
