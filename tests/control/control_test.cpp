#include "ControlSupport.h"

#include "log/ControlServer.h"
#include "log/LogException.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"

#include <future>
#include <list>
#include <memory>
#include <thread>

using namespace ZAV;
using namespace ZAV::Log;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::StartsWith;
using TestSupport::Client;
using TestSupport::Control;
using TestSupport::ShortServer;

namespace {

class ThrowingListener : public CommandListener {
public:
    void onCommand(const std::string&) override { throw LogException("two\nlines"); }
};

/// More than the system keeps for a client that does not read.
void makeAnswersLong() {
    const std::string longName(1000, 'x');
    for (int i = 0; i < 1000; ++i) {
        LoggerFactory::getLogger(longName + std::to_string(i));
    }
}

} // namespace

TEST_F(Control, SteersTheLoggers) {
    LoggerFactory::getLogger("net.tcp");
    LoggerFactory::getLogger("src/main", "with blank");
    LoggerFactory::getLogger("main.with blank");
    LoggerFactory::getLogger("two\nlines");
    LoggerFactory::getLogger("net").setExpirationTime(Util::TimeUtils::Time(90, Util::TimeUtils::SEC));
    TestSupport::RecordingListener dynamicFilter;
    LogManager::registerCommandListener("DynamicLogLevelFilterSoft", &dynamicFilter);
    const ControlServer server(address_);
    Client client(address_);

    EXPECT_EQ(client.ask("level net DEBUG"), "ok\n");
    EXPECT_EQ(client.ask("level  src/main.with blank  TRACE \r"), "ok\n");
    EXPECT_EQ(client.ask("level root ERROR"), "ok\n");
    EXPECT_EQ(client.ask("level net TRACE"), "ok\n");
    EXPECT_EQ(client.ask("expiration net.tcp 15"), "ok\n");
    EXPECT_EQ(client.ask("loggers"), "root ERROR 0\n"
                                     "main ERROR 0\n"
                                     "main.with blank ERROR 0\n"
                                     "net TRACE 1.5\n"
                                     "net.tcp TRACE 15\n"
                                     "src/main.with blank ERROR 0\n"
                                     "two\\nlines ERROR 0\n"
                                     "ok\n");
    EXPECT_THAT(dynamicFilter.arguments, ElementsAre("DEBUG", "TRACE", "ERROR", "TRACE"));
    EXPECT_EQ(client.ask("level src/main.with blank DEBUG  for 2h"), "ok\n");
    EXPECT_EQ(LoggerFactory::getLogger("src/main", "with blank").getLevel(), Level::DEBUG);
    EXPECT_EQ(client.ask("level src/main.with blank TRACE for 0s"), "ok\n");
    EXPECT_EQ(LoggerFactory::getLogger("src/main", "with blank").getLevel(), Level::ERROR);
    EXPECT_EQ(client.ask("level .net DEBUG"), "error: There is no logger '.net'.\n");
    EXPECT_EQ(client.ask("level net..tcp DEBUG"), "error: There is no logger 'net..tcp'.\n");
}

TEST_F(Control, ListsALoggerWithAnEmptyComponentWithoutASearchForIt) {
    LoggerFactory::getLogger("a/x", ".b"); // the factory takes that name for "x..b"
    for (int i = 0; i < 8000; ++i) {
        LoggerFactory::getLogger("a..b" + std::to_string(i));
    }
    const std::size_t count = LoggerFactory::getLoggerNames().size();
    const ControlServer server(address_);
    Client client(address_);
    const bool isListed = client.ask("loggers").find("\na..b7999 ") != std::string::npos;
    EXPECT_TRUE(isListed); // no answer in time is the failure
    EXPECT_EQ(client.ask("level a/x..b DEBUG"), "error: There is no logger 'a/x..b'.\n");
    EXPECT_EQ(client.ask("level a..b1 DEBUG"), "ok\n");
    EXPECT_EQ(LoggerFactory::getLogger("a..b1").getLevel(), Level::DEBUG);
    EXPECT_EQ(LoggerFactory::getLoggerNames().size(), count); // none was made
}

TEST_F(Control, RefusesWhatItCannotDoWithTheReason) {
    const ControlServer server(address_);
    Client client(address_);
    EXPECT_EQ(client.ask("level net DEBUG"), "error: There is no logger 'net'.\n");
    EXPECT_EQ(client.ask("expiration net.tcp 1"), "error: There is no logger 'net.tcp'.\n");
    EXPECT_FALSE(LoggerFactory::loggerExists("net"));
    EXPECT_EQ(client.ask("level root Debug"), "error: There is no 'Debug' LogLevel defined.\n");
    EXPECT_EQ(client.ask("expiration root 1.5"), "error: Can't convert 1.5 to integer\n");
    EXPECT_THAT(client.ask("expiration root -1"), StartsWith("error: "));
    EXPECT_THAT(client.ask("expiration root 99999999999"), StartsWith("error: "));
    EXPECT_EQ(client.ask("level root"), "error: The request is: level LOGGER LEVEL [for TIME]\n");
    EXPECT_EQ(client.ask("level root LOUD for 1min"), "error: There is no 'LOUD' LogLevel defined.\n");
    EXPECT_EQ(client.ask("level net for DEBUG"), "error: There is no logger 'net for'.\n");
    for (const char* const time : {"10", "1.5h", "10 min", "2weeks", "99999999999999999999d", "40000d"}) {
        EXPECT_THAT(client.ask(std::string("level root DEBUG for ") + time), StartsWith("error: ")) << time;
    }
    EXPECT_EQ(client.ask("flush now"), "error: The request is: flush\n");
    EXPECT_THAT(client.ask("Flush"), StartsWith("error: There is no request 'Flush'"));
    EXPECT_THAT(client.ask(""), StartsWith("error: There is no request ''"));
    EXPECT_EQ(LoggerFactory::getRootLogger().getExpirationTime(), Util::TimeUtils::Time());
}

TEST_F(Control, DeliversCommandsWithTheirArgumentAsItIs) {
    TestSupport::RecordingListener listener;
    ThrowingListener throwing;
    LogManager::registerCommandListener("heard", &listener);
    LogManager::registerCommandListener("refused", &throwing);
    const ControlServer server(address_);
    Client client(address_);
    EXPECT_EQ(client.ask("command heard"), "ok\n");
    EXPECT_EQ(client.ask("command heard  two  words "), "ok\n");
    EXPECT_EQ(client.ask("command nobody x"), "nobody listens to 'nobody'\nok\n");
    EXPECT_EQ(client.ask("command refused x"), "error: two\\nlines\n");
    EXPECT_THAT(listener.arguments, ElementsAre("", " two  words "));
}

TEST_F(Control, ASlowListenerMakesNobodyElseLookSilent) {
    class SlowListener : public CommandListener {
    public:
        explicit SlowListener(Client& other) : other_(other) {}
        void onCommand(const std::string&) override {
            other_.say("level root ERROR\n");
            std::this_thread::sleep_for(milliseconds(1200));
        }

    private:
        Client& other_;
    };
    ControlLoop::Limits limits;
    limits.silence = milliseconds(1000);
    const ShortServer server(address_, limits);
    Client client(address_);
    Client other(address_);
    SlowListener listener(other);
    LogManager::registerCommandListener("slow", &listener);
    EXPECT_EQ(client.ask("command slow"), "ok\n");
    EXPECT_EQ(other.answer(), "ok\n");
}

TEST_F(Control, CountsAndWritesTheQueue) {
    Util::Properties properties;
    properties["appender.x"] = "SimpleFileAppender";
    properties["appender.x.asynchronous"] = "true";
    properties["appender.x.dir"] = directory_.path();
    properties["zav.log.AsynchronousDispatcher.waitingPeriod"] = "3600";
    LogManager::init(properties);
    const ControlServer server(address_);
    Client client(address_);
    LoggerFactory::getRootLogger().error("queued", 0, "");
    EXPECT_EQ(client.ask("flush"), "ok\n");
    EXPECT_THAT(TestSupport::readFile(directory_ / "x"), testing::HasSubstr("ERROR queued\n"));
    EXPECT_EQ(client.ask("statistics"),
              "queued 1\ndelivered 1\ndiscarded 0\nfailed 0\nwaiting 0\nrecovered 0\nok\n");
}

TEST_F(Control, AReloadThatWaitsForAnAppenderHoldsNobodyElseUp) {
    class StuckAppender : public Appender {
    public:
        StuckAppender() : Appender("stuck", true, Filters()) {}
        std::promise<void> entered;
        std::promise<void> released;

    protected:
        void doOutput(const LogMessage&) override {
            entered.set_value();
            released.get_future().wait();
        }
    };
    const std::string file = directory_ / "app.properties";
    TestSupport::writeFile(file, "logger.net.level = INFO\n");
    LogManager::init(file);
    StuckAppender appender;
    Logger& logger = LoggerFactory::getLogger("db");
    logger.addAppender(&appender);
    auto server = std::make_unique<ControlServer>(address_);
    Client client(address_);
    EXPECT_EQ(client.ask("reload"), "ok\n");
    std::thread logging([&logger] { logger.error("a", 0, ""); });
    appender.entered.get_future().wait();
    TestSupport::writeFile(file, "logger.net.level = TRACE\n");
    Client second(address_);
    client.say("reload\n");
    second.say("reload\n");
    EXPECT_THAT(Client(address_).ask("appenders"), "ok\n"); // a hang here is a failure
    appender.released.set_value();
    logging.join();
    const std::string answers[] = {client.answer(), second.answer()};
    EXPECT_THAT(answers, testing::UnorderedElementsAre("ok\n", "error: Another reload is under way.\n"));
    EXPECT_EQ(LoggerFactory::getLogger("net").getLevel(), Level::TRACE);

    appender.entered = std::promise<void>();
    appender.released = std::promise<void>();
    std::thread loggingAgain([&logger] { logger.error("a", 0, ""); });
    appender.entered.get_future().wait();
    client.say("reload\n");
    EXPECT_EQ(second.ask("appenders"), "ok\n");
    server.reset(); // and here, too
    appender.released.set_value();
    loggingAgain.join();
    logger.removeAppender(&appender);
}

TEST_F(Control, TellsTheAppendersAndLowersThemForAWhile) {
    Util::Properties properties;
    properties["appender.all"] = "SimpleFileAppender";
    properties["appender.all.asynchronous"] = "true";
    properties["appender.errors"] = "StdoutAppender";
    properties["appender.errors.level"] = "ERROR";
    properties["appender.lasting"] = "StdoutAppender";
    properties["appender.lasting.level"] = "WARNING";
    properties["appender.lasting.expiration"] = "0";
    LogManager::init(properties);
    const ControlServer server(address_);
    Client client(address_);
    EXPECT_EQ(client.ask("appenders"), "all SimpleFileAppender async - -\n"
                                       "errors StdoutAppender sync ERROR -\n"
                                       "lasting StdoutAppender sync WARNING -\nok\n");
    EXPECT_EQ(client.ask("level root DEBUG for 1day"), "ok\n");
    EXPECT_THAT(client.ask("appenders"),
                testing::MatchesRegex("all SimpleFileAppender async - -\n"
                                      "errors StdoutAppender sync DEBUG 86...\n"
                                      "lasting StdoutAppender sync DEBUG 86...\nok\n"));
    LogManager::command("DynamicLogLevelFilterSoft", "TRACE"); // for ever
    EXPECT_THAT(client.ask("appenders"), testing::HasSubstr("lasting StdoutAppender sync TRACE -\n"));
    EXPECT_EQ(LoggerFactory::getRootLogger().getLevel(), Level::DEBUG);
}

TEST_F(Control, NoAppenderLooksLikeARefusal) {
    Util::Properties properties;
    properties["appender.error:"] = "StdoutAppender";
    LogManager::init(properties);
    const ControlServer server(address_);
    EXPECT_EQ(Client(address_).ask("appenders"), "\\x65rror: StdoutAppender sync - -\nok\n");
}

TEST_F(Control, SurvivesGarbage) {
    const ControlServer server(address_);
    Client other(address_);
    {
        Client client(address_);
        EXPECT_EQ(client.ask("command x " + std::string(4086, 'y')), "nobody listens to 'x'\nok\n");
        EXPECT_EQ(client.ask("command x " + std::string(4087, 'y')),
                  "error: A request has at most 4096 bytes.\n");
        EXPECT_EQ(client.ask(std::string(300000, 'y')), "error: A request has at most 4096 bytes.\n");
        EXPECT_THAT(client.ask("\x1b[31m\xff"), StartsWith("error: There is no request '\\x1b[31m"));
        EXPECT_EQ(client.ask(std::string("level root\0 TRACE", 17)), "error: A request holds no NUL.\n");
        client.say("statistics\nlevel root NONE\nlevel root ERROR\nlevel root TR");
        EXPECT_THAT(client.answer(), StartsWith("queued "));
        EXPECT_THAT(client.answer(), StartsWith("error: "));
        EXPECT_EQ(client.answer(), "ok\n");
    }
    EXPECT_THAT(other.ask("loggers"), StartsWith("root ERROR 0\n")); // the torn request was not carried out
}

TEST_F(Control, DropsWhoIsSilentOrDoesNotRead) {
    makeAnswersLong();
    ControlLoop::Limits limits;
    limits.clients = 3;
    limits.silence = milliseconds(300);
    const ShortServer server(address_, limits);
    Client silent(address_);
    Client trickling(address_);
    Client notReading(address_);
    trickling.say("log");
    notReading.say("loggers\nloggers\n");
    std::list<Client> waiting; // as many as have to be dropped
    for (int i = 0; i < limits.clients; ++i) {
        waiting.emplace_back(address_);
        EXPECT_EQ(waiting.back().ask("level root ERROR"), "ok\n");
    }
    EXPECT_EQ(silent.rest() + trickling.rest(), "");
    EXPECT_EQ(notReading.rest().find("\nok\n"), std::string::npos);
}

TEST_F(Control, DropsWhoAsksForNothingThatCanBeDone) {
    ControlLoop::Limits limits;
    limits.clients = 2;
    limits.silence = milliseconds(300);
    const ShortServer server(address_, limits);
    const auto asksUntilDropped = [this](const std::string& request) {
        Client client(address_);
        try {
            while (!client.ask(request).empty()) { // a hang here is the failure
            }
        } catch (const std::runtime_error&) { // the server hung up first
        }
    };
    std::thread empty(asksUntilDropped, "");
    asksUntilDropped("level nobody INFO");
    empty.join();
    EXPECT_EQ(Client(address_).ask("level root ERROR"), "ok\n");
}

TEST_F(Control, WhoLeavesAmidAnAnswerMakesRoom) {
    makeAnswersLong();
    ControlLoop::Limits limits;
    limits.clients = 1;
    limits.silence = std::chrono::hours(1);
    const ShortServer server(address_, limits);
    {
        Client leaving(address_);
        leaving.say("level root ERROR\nloggers\nloggers\n");
        leaving.answer();
    }
    Client next(address_);
    EXPECT_EQ(next.ask("level root ERROR"), "ok\n");
}

TEST_F(Control, EndsWhileClientsHang) {
    makeAnswersLong();
    std::list<Client> clients;
    {
        const ControlServer server(address_);
        for (int i = 0; i < 8; ++i) {
            clients.emplace_back(address_).say("loggers\nloggers\n");
        }
        clients.front().answer();
    }
    EXPECT_THROW(Client client(address_), std::runtime_error);
    const ControlServer next(address_);
    EXPECT_EQ(Client(address_).ask("level root ERROR"), "ok\n");
}

TEST_F(Control, AnAddressHasOneServer) {
    const ControlServer server(address_);
    EXPECT_EQ(TestSupport::textThrownBy<LogException>([this] { ControlServer another(address_); }),
              "Can't serve " + address_ + ": Another process serves it");
    EXPECT_THROW(ControlServer another(""), LogException);
    EXPECT_EQ(Client(address_).ask("flush"), "ok\n");
}
