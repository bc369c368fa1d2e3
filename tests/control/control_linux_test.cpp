#include "ControlSupport.h"

#include "log/ControlServer.h"
#include "log/LogException.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace ZAV;
using namespace ZAV::Log;
using testing::EndsWith;
using TestSupport::Client;
using TestSupport::Control;
using TestSupport::ShortServer;

namespace {

/// Runs a function in a child process.
/// \return what it returns; -1 if it crashes
int inChild(const std::function<int()>& function) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(function());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string refusalAt(const std::string& address) {
    return TestSupport::textThrownBy<LogException>([&address] { const ControlServer server(address); });
}

bool isServed(const std::string& address) {
    try {
        return Client(address).ask("flush") == "ok\n";
    } catch (const std::exception&) {
        return false; // it has hung up
    }
}

} // namespace

TEST_F(Control, TheSocketIsForItsOwnerAlone) {
    const mode_t before = umask(0);
    {
        const ControlServer server(address_);
        struct stat status;
        EXPECT_EQ(stat(address_.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFSOCK | S_IRUSR | S_IWUSR));
    }
    EXPECT_FALSE(TestSupport::fileExists(address_));
    umask(before);
}

TEST_F(Control, AnotherUserIsNotServed) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can become somebody else";
    }
    const ControlServer server(address_);
    chmod(directory_.path().c_str(), S_IRWXU | S_IRWXG | S_IRWXO);
    chmod(address_.c_str(), S_IRWXU | S_IRWXG | S_IRWXO); // so that the peer's credentials decide
    EXPECT_EQ(inChild([this] {
                  const uid_t nobody = 65534;
                  return setuid(nobody) == 0 && !isServed(address_) ? 7 : 1;
              }),
              7);
    EXPECT_TRUE(isServed(address_));
}

TEST_F(Control, AServerOfAnotherUserIsNotAsked) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can become somebody else";
    }
    const uid_t nobody = 65534;
    chmod(directory_.path().c_str(), S_IRWXU | S_IRWXG | S_IRWXO);
    int ended[2];
    int ready[2];
    ASSERT_EQ(pipe(ended) + pipe(ready), 0);
    const pid_t foreign = fork();
    if (foreign == 0) {
        close(ended[1]);
        char byte = setuid(nobody) == 0 && new ControlServer(address_) != nullptr ? 'y' : 'n';
        _exit(write(ready[1], &byte, 1) == 1 && read(ended[0], &byte, 1) == 0 ? 0 : 1);
    }
    char byte = 'n';
    EXPECT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'y');
    chmod(address_.c_str(), S_IRWXU | S_IRWXG | S_IRWXO); // so that the credentials decide
    EXPECT_TRUE((Client(address_), true));                // root asks anybody
    const auto connectsAs = [this](uid_t user) {
        return inChild([this, user] {
            try {
                return setuid(user) == 0 ? (Client(address_), 1) : 2;
            } catch (const Platform::ForeignServer&) {
                return 7;
            }
        });
    };
    EXPECT_EQ(connectsAs(nobody), 1);
    EXPECT_EQ(connectsAs(nobody - 1), 7);
    close(ended[1]);
    waitpid(foreign, nullptr, 0);
    for (const int descriptor : {ended[0], ready[0], ready[1]}) {
        close(descriptor);
    }
}

namespace {

/// Serves one client with what a function says, up to the end of the test.
class TalkativeServer {
public:
    TalkativeServer(const std::string& address, std::function<std::string()> speech)
        : listening_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)), speech_(std::move(speech)) {
        sockaddr_un name = {};
        name.sun_family = AF_UNIX;
        address.copy(name.sun_path, sizeof name.sun_path - 1);
        EXPECT_EQ(bind(listening_, reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
        EXPECT_EQ(listen(listening_, 1), 0);
        thread_ = std::thread([this] { talk(); });
    }
    ~TalkativeServer() {
        shutdown(listening_, SHUT_RDWR);
        thread_.join();
        close(listening_);
    }

private:
    void talk() const {
        const int client = accept(listening_, nullptr, nullptr);
        for (std::string text = speech_(); send(client, text.data(), text.size(), MSG_NOSIGNAL) > 0;) {
            text = speech_(); // until the client has hung up
        }
        close(client);
    }

    int listening_;
    std::function<std::string()> speech_;
    std::thread thread_;
};

} // namespace

TEST_F(Control, AnAnswerThatDripsEndsAtTheLimitOfTheWholeConversation) {
    const TalkativeServer server(address_, [] {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return std::string(".");
    });
    Platform::LocalClient client(address_, std::chrono::milliseconds(300));
    EXPECT_EQ(TestSupport::textThrownBy<std::runtime_error>([&client] {
                  while (!client.receive().empty()) { // a hang here is the failure
                  }
              }),
              "No answer came in time");
}

#ifdef ZAV_LOG_PROGRAM
TEST_F(Control, CtlTakesNoAnswerWithoutAnEnd) {
    const TalkativeServer server(address_, [] { return std::string(65535, 'x') + '\n'; });
    const std::string command =
        std::string(ZAV_LOG_PROGRAM) + " ctl " + address_ + " loggers 2>&1 >/dev/null";
    FILE* const output = popen(command.c_str(), "r");
    char text[1000] = {};
    EXPECT_GT(fread(text, 1, sizeof text - 1, output), 0U);
    EXPECT_EQ(WEXITSTATUS(pclose(output)), 1);
    EXPECT_THAT(text, EndsWith("the answer is larger than 16 MiB\n"));
}
#endif

TEST_F(Control, ReplacesAStaleSocketAndNothingElse) {
    const auto crash = [this] {
        new ControlServer(address_);
        return 0;
    };
    EXPECT_EQ(inChild(crash), 0);
    EXPECT_TRUE(TestSupport::fileExists(address_));
    EXPECT_TRUE((ControlServer(address_), true));

    // A child of the crashed process lives on, and has a copy of the socket.
    int hold[2];
    ASSERT_EQ(pipe(hold), 0);
    EXPECT_EQ(inChild([&] {
                  new ControlServer(address_);
                  if (fork() == 0) {
                      char byte;
                      close(hold[1]);
                      _exit(read(hold[0], &byte, 1) == 0 ? 0 : 1);
                  }
                  return 0;
              }),
              0);
    {
        const ControlServer server(address_);
        EXPECT_TRUE(isServed(address_));
    }
    close(hold[0]);
    close(hold[1]);

    TestSupport::writeFile(directory_ / "file", "kept");
    EXPECT_THAT(refusalAt(directory_ / "file"), EndsWith("There is a file that is no socket"));
    EXPECT_EQ(TestSupport::readFile(directory_ / "file"), "kept");
    EXPECT_THAT(refusalAt(directory_.path()), EndsWith("There is a file that is no socket"));
    EXPECT_THAT(refusalAt(directory_ / "missing/socket"), EndsWith("No such file or directory"));
    EXPECT_THAT(refusalAt(directory_ / std::string(200, 'x')), EndsWith("has 1 to 107 characters"));
}

TEST_F(Control, AForkedChildLeavesTheServerToItsParent) {
    auto server = std::make_unique<ControlServer>(address_);
    Client client(address_);
    EXPECT_EQ(client.ask("flush"), "ok\n");
    EXPECT_EQ(inChild([&server] {
                  server.reset();
                  return 7;
              }),
              7);
    EXPECT_EQ(client.ask("flush"), "ok\n");
    EXPECT_TRUE(isServed(address_));
}

TEST_F(Control, AListenerThatForksAndReturnsInBothLeavesNoSecondServer) {
    pid_t child = -1;
    TestSupport::CallingListener forking([&child](const std::string&) { child = fork(); });
    LogManager::registerCommandListener("GO", &forking);
    const ControlServer server(address_);
    Client client(address_);
    EXPECT_EQ(client.ask("command GO"), "ok\n");
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child); // a hang here is the failure
    EXPECT_EQ(client.ask("flush"), "ok\n");
    EXPECT_TRUE(isServed(address_));
}

/// The child has a thread that has ended, a consumer and a server, which it takes along.
TEST_F(Control, IsNoReasonForAProcessToGoOn) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer has a thread of its own";
#endif
    pid_t child = -1;
    std::thread([&] {
        child = fork();
        if (child == 0) {
            static TestSupport::CallingAppender appender([](const LogMessage&) {}, false);
            LogManager::addAsynchronousAppender(&appender);
            static const ControlServer server(address_);
        }
    }).join();
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child); // a hang here is the failure
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_FALSE(TestSupport::fileExists(address_));
}

TEST_F(Control, EndsThoughItsDescriptorsWereClosedAndLeavesAloneWhatHasTheirNumbers) {
    const std::string file = directory_ / "file";
    EXPECT_EQ(inChild([&] { // a hang here is the failure
                  auto server = std::make_unique<ControlServer>(address_);
                  EXPECT_TRUE(isServed(address_));
                  const int behindAll = 1024;
                  for (int descriptor = 3; descriptor < behindAll; ++descriptor) {
                      close(descriptor);
                  }
                  std::vector<int> opened;
                  for (int i = 0; i < 10; ++i) {
                      opened.push_back(open(file.c_str(), O_CREAT | O_RDWR, S_IRUSR | S_IWUSR));
                  }
                  server.reset();
                  const bool areOpen = std::all_of(opened.begin(), opened.end(), [](int descriptor) {
                      return fcntl(descriptor, F_GETFD) >= 0;
                  });
                  return areOpen ? 7 : 1;
              }),
              7);
    EXPECT_EQ(TestSupport::readFile(file), "");
}

TEST_F(Control, TheServerThreadLeavesSignalsToTheApplication) {
    static volatile std::sig_atomic_t handled = 0;
    std::signal(SIGUSR1, [](int) { handled = 1; });
    const ControlServer server(address_);
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    kill(getpid(), SIGUSR1);
    EXPECT_TRUE(isServed(address_));
    EXPECT_EQ(handled, 0);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_EQ(handled, 1);

    { Client(address_).say("loggers\nloggers\nloggers\n"); } // gone before it is answered
    EXPECT_TRUE(isServed(address_));
}

TEST_F(Control, AFlushThatHangsKeepsNobodyWaiting) {
    // A pipe that is full blocks the appender until it is read.
    ASSERT_EQ(mkfifo((directory_ / "pipe").c_str(), S_IRUSR | S_IWUSR), 0);
    ASSERT_EQ(symlink("pipe", (directory_ / "x").c_str()), 0);
    const int reader = open((directory_ / "pipe").c_str(), O_RDWR | O_NONBLOCK);
    char page[4096] = {};
    while (write(reader, page, sizeof page) > 0) {
    }
    Util::Properties properties;
    properties["appender.x"] = "SimpleFileAppender";
    properties["appender.x.asynchronous"] = "true";
    properties["appender.x.dir"] = directory_.path();
    LogManager::init(properties);
    LoggerFactory::getRootLogger().error("queued", 0, "");
    ControlLoop::Limits limits;
    limits.flush = std::chrono::milliseconds(500);
    const ShortServer server(address_, limits);
    Client flushing(address_);
    flushing.say("flush\n");
    EXPECT_EQ(Client(address_).ask("level root ERROR"), "ok\n");
    EXPECT_EQ(flushing.answer(), "error: The queue was not written in time.\n");

    while (read(reader, page, sizeof page) > 0) {
    }
    while (flushing.ask("flush") != "ok\n") { // a hang here is the failure
    }
    LogManager::finish();
    close(reader);
}
