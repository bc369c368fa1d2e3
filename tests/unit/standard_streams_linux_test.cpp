// Lines on standard streams that nobody reads, and in processes that fork.

#include "TestSupport.h"

#include "log/appenders/StdoutAppender.h"
#include "platform/Terminal.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <streambuf>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

/// Runs a function in a child, which may change its standard streams.
/// \return the child's status from `waitpid`, 0 on success
int inChild(const std::function<void()>& function) {
    const pid_t child = fork();
    if (child == 0) {
        function();
        _exit(Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

/// \return the write end of a pipe whose read end is closed
int brokenPipe() {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    close(ends[0]);
    return ends[1];
}

/// A stream buffer of the application, unknown to the library.
class PipeBuffer : public std::streambuf {
public:
    explicit PipeBuffer(int descriptor) : descriptor_(descriptor) {}

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        static_cast<void>(!::write(descriptor_, text, static_cast<std::size_t>(size)));
        return size;
    }

private:
    int descriptor_;
};

bool isPending(int signal) {
    sigset_t pending;
    return sigpending(&pending) == 0 && sigismember(&pending, signal) == 1;
}

void logTo(std::ostream& stream, const std::string& text) {
    AppenderValues values("x");
    values.stream = &stream;
    StdoutAppender(values, {}).output(makeMessage(text));
}

/// The signal ends this process if the stream lets it through.
void expectNoSignalFrom(std::ostream& stream) {
    errno = 17;
    logTo(stream, "a");
    logTo(stream, "b");
    EXPECT_EQ(errno, 17);
    EXPECT_FALSE(isPending(SIGPIPE));
    stream.clear();

    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    logTo(stream, "a");
    EXPECT_FALSE(isPending(SIGPIPE));
    stream.clear();
    raise(SIGPIPE); // not caused by the library
    logTo(stream, "a");
    EXPECT_TRUE(isPending(SIGPIPE));
    stream.clear();
    const timespec noTime = {0, 0};
    EXPECT_EQ(sigtimedwait(&signals, nullptr, &noTime), SIGPIPE);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

constexpr std::size_t MORE_THAN_A_PIPE = 300'000;

int openAnew(const std::string& path) {
    return open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
}

} // namespace

TEST(StandardStreams, AReaderThatLeavesIsNoSignal) {
    EXPECT_EQ(inChild([] {
                  dup2(brokenPipe(), STDOUT_FILENO);
                  expectNoSignalFrom(std::cout);
                  PipeBuffer buffer(STDOUT_FILENO);
                  std::cout.rdbuf(&buffer);
                  expectNoSignalFrom(std::cout);
              }),
              0);
    EXPECT_EQ(inChild([] {
                  dup2(brokenPipe(), STDERR_FILENO);
                  expectNoSignalFrom(std::cerr);
              }),
              0);
    EXPECT_EQ(inChild([] { // what the application has left in a tied stream
                  const TemporaryDirectory directory;
                  dup2(brokenPipe(), STDOUT_FILENO);
                  dup2(openAnew(directory / "errors"), STDERR_FILENO);
                  std::cout << "left";
                  expectNoSignalFrom(std::cerr);
              }),
              0);
    EXPECT_EQ(inChild([] {
                  std::ios::sync_with_stdio(false);
                  dup2(brokenPipe(), STDOUT_FILENO);
                  expectNoSignalFrom(std::cout);
              }),
              0);
}

TEST(StandardStreams, GoWhereTheApplicationSendsThemBehindWhatItHasWritten) {
    const TemporaryDirectory directory;
    for (const bool isSynchronised : {true, false}) {
        EXPECT_EQ(inChild([&] {
                      std::ios::sync_with_stdio(isSynchronised);
                      dup2(openAnew(directory / "first"), STDOUT_FILENO);
                      std::cout << "begun ";
                      Platform::writeToStream(std::cout, "a\n");
                      dup2(openAnew(directory / "second"), STDOUT_FILENO);
                      Platform::writeToStream(std::cout, "b\n");
                      EXPECT_TRUE(std::cout.good());
                  }),
                  0);
        EXPECT_EQ(readFile(directory / "first"), "begun a\n");
        EXPECT_EQ(readFile(directory / "second"), "b\n");
        std::filesystem::remove(directory / "first");
        std::filesystem::remove(directory / "second");
    }
}

/// A thread writes to a full pipe. A fork then neither waits for it nor inherits its line.
TEST(StandardStreams, AForkedChildHasNothingOfALineThatIsBeingWritten) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer does not follow forks of a process with threads";
#endif
    const TemporaryDirectory directory;
    for (const bool isSynchronised : {true, false}) {
        EXPECT_EQ(inChild([&] {
                      std::ios::sync_with_stdio(isSynchronised);
                      static char memory[2 * MORE_THAN_A_PIPE];
                      std::setvbuf(stdout, memory, _IOFBF, sizeof memory);
                      std::cout.rdbuf()->pubsetbuf(memory, sizeof memory);
                      int ends[2];
                      ASSERT_EQ(pipe(ends), 0);
                      dup2(ends[1], STDOUT_FILENO);
                      close(ends[1]);
                      const int capacity = fcntl(ends[0], F_GETPIPE_SZ);
                      std::thread([] { logTo(std::cout, std::string(MORE_THAN_A_PIPE, 'x')); }).detach();
                      for (int waiting = 0; waiting < capacity / 2;) {
                          ioctl(ends[0], FIONREAD, &waiting);
                      }
                      EXPECT_EQ(inChild([&] {
                                    dup2(openAnew(directory / "child"), STDOUT_FILENO);
                                    std::cout.flush();
                                    logTo(std::cout, "child's");
                                }),
                                0);
                  }),
                  0);
        EXPECT_THAT(readFile(directory / "child"), EndsWith(" child's\n"));
        EXPECT_LT(readFile(directory / "child").size(), MORE_THAN_A_PIPE / 2);
        std::filesystem::remove(directory / "child");
    }
}

TEST(StandardStreams, AWriteThatFailsLeavesTheNextOneItsChance) {
    const TemporaryDirectory directory;
    for (const bool isSynchronised : {true, false}) {
        EXPECT_EQ(inChild([&] {
                      std::ios::sync_with_stdio(isSynchronised);
                      dup2(brokenPipe(), STDOUT_FILENO);
                      logTo(std::cout, "lost");
                      dup2(openAnew(directory / "again"), STDOUT_FILENO);
                      logTo(std::cout, "appender's");
                      EXPECT_TRUE(std::cout << "program's\n" << std::flush);
                  }),
                  0);
        EXPECT_THAT(readFile(directory / "again"), EndsWith(" appender's\nprogram's\n"));
        EXPECT_THAT(readFile(directory / "again"), Not(HasSubstr("lost")));
        std::filesystem::remove(directory / "again");
    }
}

TEST(StandardStreams, ANonBlockingPipeGetsWholeLines) {
    EXPECT_EQ(inChild([] {
                  int ends[2];
                  ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
                  dup2(ends[1], STDOUT_FILENO);
                  close(ends[1]);
                  std::size_t received = 0;
                  std::thread reader([&] {
                      fcntl(ends[0], F_SETFL, 0);
                      std::string part(4096, ' ');
                      for (ssize_t size = 1; size > 0;) {
                          size = read(ends[0], part.data(), part.size());
                          received += static_cast<std::size_t>(std::max<ssize_t>(size, 0));
                      }
                  });
                  logTo(std::cout, std::string(MORE_THAN_A_PIPE, 'x'));
                  close(STDOUT_FILENO);
                  reader.join();
                  EXPECT_GT(received, MORE_THAN_A_PIPE);
              }),
              0);
}
