// Linux-specific behaviour.

#include "TestSupport.h"
#include "TimeZone.h"

#include "log/LogContext.h"
#include "log/appenders/FileAppender.h"
#include "log/async/AsynchronousDispatcher.h"
#include "platform/CriticalSection.h"
#include "platform/Files.h"
#include "platform/OpenFiles.h"
#include "platform/Process.h"
#include "zav-util/StandardError.h"
#include "zav-util/SystemInformation.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <future>
#include <memory>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

/// The errors with which the simulated file system refuses a call; 0 if it supports it.
int renameError = 0;
int linkError = 0;

int fail(int error) {
    errno = error;
    return -1;
}

} // namespace

// These replace the system's functions.

int renameat2(int fromDirectory, const char* from, int toDirectory, const char* to, unsigned flags) noexcept {
    return renameError != 0
               ? fail(renameError)
               : static_cast<int>(syscall(SYS_renameat2, fromDirectory, from, toDirectory, to, flags));
}

int link(const char* from, const char* to) noexcept {
    return linkError != 0 ? fail(linkError) : linkat(AT_FDCWD, from, AT_FDCWD, to, 0);
}

TEST(Files, RenamingNeverOverwritesWhateverTheFileSystemLacks) {
    for (const auto& [lacksRename, lacksLink] : {std::pair(EINVAL, 0), {ENOSYS, EPERM}}) {
        const TemporaryDirectory directory;
        writeFile(directory / "a", "A");
        writeFile(directory / "b", "B");
        renameError = lacksRename;
        linkError = lacksLink;
        EXPECT_FALSE(Platform::renameFile(directory / "a", directory / "b"));
        EXPECT_EQ(readFile(directory / "a") + readFile(directory / "b"), "AB");
        EXPECT_TRUE(Platform::renameFile(directory / "a", directory / "c"));
        EXPECT_FALSE(fileExists(directory / "a"));
        EXPECT_EQ(readFile(directory / "c"), "A");
        EXPECT_FALSE(Platform::renameFile(directory / "missing", directory / "d"));
        renameError = EACCES; // no reason to try another way
        EXPECT_FALSE(Platform::renameFile(directory / "c", directory / "d"));
    }
}

namespace {

std::atomic<int> interruptions{0};

} // namespace

TEST(OutputFile, GoesOnAfterAnInterruptedOrAShortWrite) {
    const TemporaryDirectory directory;
    const std::string pipe = directory / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    struct sigaction action = {};
    action.sa_handler = [](int) { ++interruptions; };
    ASSERT_EQ(sigaction(SIGUSR1, &action, nullptr), 0);

    std::string received;
    std::thread reader([&, writer = pthread_self()] {
        std::ifstream stream(pipe);
        stream.peek(); // waits until the writer is writing
        // The first one causes a short write, the next ones interrupt writes before any byte. They are sent
        // in a fixed number, since the thread sanitizer delays the handler until the writer is done.
        for (int i = 0; i < 1'000; ++i) {
            pthread_kill(writer, SIGUSR1);
            std::this_thread::yield();
        }
        received.assign(std::istreambuf_iterator<char>(stream), {});
    });
    std::string text;
    for (int i = 0; i < 100'000; ++i) { // more than the pipe holds
        text += std::to_string(i);
    }
    std::filesystem::create_symlink("pipe", directory / "link");
    Platform::OutputFile file;
    do {
        file.open(directory / "link", Platform::OutputFile::APPEND);
    } while (file.hasFailed()); // until there is a reader
    file.write(text);
    file.close();
    reader.join();
    EXPECT_GT(interruptions, 0);
    EXPECT_FALSE(file.hasFailed());
    EXPECT_TRUE(received == text);
}

namespace {

using Platform::FileRules;
using Platform::OutputFile;

constexpr OutputFile::Mode MODES[] = {OutputFile::TRUNCATE, OutputFile::APPEND, OutputFile::CREATE};
constexpr FileRules STRICT{std::nullopt, false};

bool canOpen(const std::string& path, OutputFile::Mode mode, const FileRules& rules) {
    OutputFile file;
    file.open(path, mode, rules);
    EXPECT_EQ(file.isOpen(), !file.hasFailed());
    return file.isOpen();
}

} // namespace

TEST(OutputFile, RefusesWhatIsNoFileAndLeavesItAlone) {
    const TemporaryDirectory directory;
    const std::string pipe = directory / "pipe";
    std::filesystem::create_symlink("pipe", directory / "link");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const bool hasReader : {false, true}) {
        const int reader = hasReader ? ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK) : -1;
        for (const OutputFile::Mode mode : MODES) {
            EXPECT_FALSE(canOpen(pipe, mode, FileRules()));
            EXPECT_FALSE(canOpen(pipe, mode, STRICT));
            EXPECT_FALSE(canOpen(directory / "link", mode, STRICT));
            EXPECT_EQ(canOpen(directory / "link", mode, FileRules()),
                      hasReader && mode != OutputFile::CREATE);
            EXPECT_FALSE(canOpen(directory.path(), mode, FileRules()));
            EXPECT_TRUE(canOpen("/dev/null", mode, FileRules()));
        }
        ::close(reader);
    }
    EXPECT_TRUE(canOpen("/dev/null", OutputFile::APPEND, STRICT));
}

TEST(OutputFile, KeepsWhatHasAppearedInTheNewFilesPlace) {
    const TemporaryDirectory directory;
    const std::string path = directory / "f";
    for (const std::optional<unsigned> permissions :
         {std::optional<unsigned>(), std::optional<unsigned>(0600)}) {
        writeFile(path, "foreign\n");
        EXPECT_FALSE(canOpen(path, OutputFile::CREATE, {permissions, false}));
        EXPECT_TRUE(canOpen(path, OutputFile::CREATE, {permissions, true}));
        EXPECT_EQ(readFile(path), "foreign\n");
        std::filesystem::remove(path);
        EXPECT_TRUE(canOpen(path, OutputFile::CREATE, {permissions, false}));
        std::filesystem::remove(path);
        for (const char* target : {"missing", "present"}) {
            writeFile(directory / "present", "foreign\n");
            std::filesystem::create_symlink(target, path);
            EXPECT_FALSE(canOpen(path, OutputFile::CREATE, {permissions, false}));
            EXPECT_FALSE(canOpen(path, OutputFile::CREATE, {permissions, true}));
            EXPECT_FALSE(fileExists(directory / "missing"));
            EXPECT_EQ(readFile(directory / "present"), "foreign\n");
            std::filesystem::remove(path);
        }
    }
}

TEST(OutputFile, RefusesAnotherUsersFileForRootWhereLinksAreNotFollowed) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root is refused such a file, and only root can make one";
    }
    const TemporaryDirectory directory;
    const std::string path = directory / "f";
    writeFile(path, "foreign\n");
    ASSERT_EQ(chown(path.c_str(), 1, 1), 0);
    EXPECT_FALSE(canOpen(path, OutputFile::APPEND, STRICT));
    EXPECT_FALSE(canOpen(path, OutputFile::TRUNCATE, STRICT));
    EXPECT_EQ(readFile(path), "foreign\n");
    EXPECT_TRUE(canOpen(path, OutputFile::TRUNCATE, FileRules()));
    EXPECT_EQ(readFile(path), "");
}

TEST(OutputFile, WritesToAPipeWhoseReaderHasLeftWithoutASignal) {
    const TemporaryDirectory directory;
    std::filesystem::create_symlink("pipe", directory / "link");
    ASSERT_EQ(mkfifo((directory / "pipe").c_str(), 0600), 0);
    const int reader = ::open((directory / "pipe").c_str(), O_RDONLY | O_NONBLOCK);
    OutputFile file;
    file.open(directory / "link", OutputFile::APPEND);
    file.write("a");
    EXPECT_FALSE(file.hasFailed());
    ::close(reader);
    file.write("b"); // here the signal would end the test
    EXPECT_TRUE(file.hasFailed());
    sigset_t pending;
    ASSERT_EQ(sigpending(&pending), 0);
    EXPECT_FALSE(sigismember(&pending, SIGPIPE));
}

TEST(NoCancellation, PutsOffACancellationThatIsAskedForBeforeASystemCall) {
    const TemporaryDirectory directory;
    std::atomic<bool> isThrough{false};
    std::thread thread([&] {
        pthread_cancel(pthread_self());
        Platform::OutputFile file;
        file.open(directory / "a", Platform::OutputFile::APPEND);
        file.write("a");
        file.close();
        Util::writeErrorLine("cancelled");
        std::vector<std::string> names;
        Platform::listFiles(directory.path(), names);
        isThrough = true;
        pthread_testcancel();
        isThrough = false;
    });
    thread.join();
    EXPECT_TRUE(isThrough);
    EXPECT_EQ(readFile(directory / "a"), "a");
}

/// Runs itself again under another program name.
TEST(Process, IsCalledByItsNameAlsoIfThatLooksLikeADeletedFile) {
    const std::string name = "odd (deleted)";
    if (Util::getProgramName() == name) {
        std::filesystem::remove(Platform::executablePath());
        EXPECT_EQ(Util::getProgramName(), name);
        return;
    }
    const TemporaryDirectory directory;
    std::filesystem::copy_file(Platform::executablePath(), directory / name);
    const std::string command = "'" + (directory / name) + "' --gtest_filter='Process.IsCalled*' >&2";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_FALSE(fileExists(directory / name)) << "it did not run under that name";
}

namespace {

/// Forks, and ends the child with the function's result as exit code.
/// \return the child's exit code, or another number if it crashed
template <typename Function>
int resultInChild(Function function) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(function());
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Waits until a thread is blocked.
void waitUntilAsleep(const std::atomic<pid_t>& thread) {
    for (char state = 'R'; state != 'S'; std::this_thread::yield()) {
        const std::string line = readFile("/proc/self/task/" + std::to_string(thread) + "/stat");
        state = line.empty() ? 'R' : line.at(line.rfind(')') + 2);
    }
}

} // namespace

/// Writes by other threads to the closed stream fail while files are opened, each of which would get its
/// descriptor.
TEST(OutputFile, GetsNothingOfWhatIsWrittenToAStandardStreamThatIsClosed) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer takes the use of a number that is given out meanwhile for a race";
#endif
    const TemporaryDirectory directory;
    writeFile(directory / "properties", "");
    const auto openOften = [path = directory / "f"] {
        for (int i = 0; i < 3'000; ++i) {
            canOpen(path, OutputFile::APPEND, FileRules());
        }
    };
    EXPECT_EQ(resultInChild([&] {
                  close(STDOUT_FILENO);
                  std::string noticed; // detects that a stream is closed
                  Platform::readFile(directory / "properties", noticed);
                  std::atomic<bool> isOver{false};
                  std::thread writing([&isOver] {
                      while (!isOver) {
                          static_cast<void>(!write(STDOUT_FILENO, "stray", 5));
                      }
                  });
                  std::thread opening(openOften);
                  openOften();
                  opening.join();
                  isOver = true;
                  writing.join();
                  return fcntl(STDOUT_FILENO, F_GETFD) < 0 ? 0 : 1;
              }),
              0);
    EXPECT_EQ(readFile(directory / "f"), "");
}

TEST(Process, HasANumberOfItsOwnInAForkedChild) {
    const unsigned generation = Platform::forkGeneration();
    EXPECT_EQ(resultInChild([generation] {
                  return Platform::rememberedProcessId() == getpid() &&
                                 Platform::forkGeneration() != generation
                             ? 0
                             : 1;
              }),
              0);
    EXPECT_EQ(Platform::forkGeneration(), generation);
}

TEST(Process, HasTheChildsThreadInItsMessagesAfterAForkAndTheParentsContext) {
    const LogCapture capture(LoggerFactory::getRootLogger(), Level::TRACE, false);
    const LogContext context("request", "r1");
    Logger& logger = LoggerFactory::getLogger("forked");
    logger.error("parent");
    EXPECT_EQ(resultInChild([&] {
                  logger.error("child");
                  const LogMessage message = capture.messages().back();
                  return message.getThread() == static_cast<std::uint64_t>(getpid()) &&
                                 message.getContext() == LogMessage::Pairs{{"request", "r1"}}
                             ? 0
                             : 1;
              }),
              0);
    logger.error("parent again");
    EXPECT_EQ(capture.messages().back().getThread(), static_cast<std::uint64_t>(gettid()));
}

TEST(Process, KnowsWhenOneThreadIsLeftOfItAlsoIfTheFirstHasEnded) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer has a thread of its own";
#endif
    EXPECT_EQ(resultInChild([] {
                  if (!Platform::isOnlyThread()) {
                      return 1;
                  }
                  std::promise<void> looked;
                  std::thread([&looked] {
                      if (Platform::isOnlyThread()) {
                          _exit(2);
                      }
                      looked.set_value();
                      while (!Platform::isOnlyThread()) { // a hang here is the failure
                          std::this_thread::yield();
                      }
                      _exit(0);
                  }).detach();
                  looked.get_future().wait();
                  syscall(SYS_exit, 0); // ends only the thread, like pthread_exit, but without unwinding
                  return 3;
              }),
              0);
}

TEST(Process, IsOverWhenItsOtherThreadsServeButNotWhatTheyHaveStarted) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer has a thread of its own";
#endif
    EXPECT_EQ(resultInChild([] {
                  std::promise<void> released;
                  std::promise<std::thread> started;
                  std::thread([&] {
                      Platform::markAsServing();
                      started.set_value(std::thread([&released] { released.get_future().wait(); }));
                      std::promise<void>().get_future().wait(); // serves
                  }).detach();
                  std::thread other = started.get_future().get();
                  if (Platform::isOnlyThread()) {
                      return 1;
                  }
                  released.set_value();
                  other.join();
                  while (!Platform::isOnlyThread()) { // a hang here is the failure
                      std::this_thread::yield();
                  }
                  return 0;
              }),
              0);
}

/// The other locks, the creation of locks and loggers, and the queue stay usable. The busy lock is destroyed
/// as soon as it is free, as a file's is with its appender.
TEST(Fork, WaitsForABusyLockWithNothingElseInItsHands) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizers lock their allocators during a fork";
#endif
    Platform::CriticalSection own(Platform::AWAITED_BY_FORK);
    Platform::CriticalSection other(Platform::AWAITED_BY_FORK);
    auto busy = std::make_unique<Platform::CriticalSection>(Platform::AWAITED_BY_FORK);
    std::promise<void> held;
    std::promise<void> released;
    std::thread holding([&] {
        {
            const Platform::ScopedLock lock(*busy);
            held.set_value();
            released.get_future().wait();
        }
        busy.reset();
    });
    held.get_future().wait();
    std::atomic<pid_t> forkingThread{0};
    std::thread forking([&] {
        const Platform::ScopedLock lock(own);
        forkingThread = gettid();
        EXPECT_EQ(resultInChild([&]() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
                      return other.tryLock() && own.isHeldOnce() ? 0 : 1;
                  }),
                  0);
    });
    waitUntilAsleep(forkingThread);
    { const Platform::ScopedLock lock(other); } // a hang here, or in any call up to the join, is the failure
    { const Platform::CriticalSection made(Platform::AWAITED_BY_FORK); }
    LoggerFactory::getLogger("made.while.a.fork.waits").setLevel(Level::ERROR, true);
    LogManager::flush();
    released.set_value();
    holding.join();
    forking.join();
    const bool isFree = own.tryLock();
    EXPECT_TRUE(isFree);
    if (isFree) {
        own.unlock();
    }
}

/// Each thread holds its own lock nearly all the time, so that all are hardly ever free at once.
TEST(Fork, ComesThroughAmongThreadsThatLogWithoutAPause) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizers lock their allocators during a fork";
#endif
    constexpr std::size_t THREADS = 8;
    std::atomic<bool> isOver{false};
    std::atomic<std::size_t> logging{0};
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < THREADS; ++i) {
        threads.emplace_back([&] {
            Platform::CriticalSection file(Platform::AWAITED_BY_FORK);
            Platform::CriticalSection inner(Platform::AWAITED_BY_FORK);
            for (bool isFirst = true; !isOver; isFirst = false) {
                const Platform::ScopedLock lock(file);
                logging += isFirst ? 1 : 0;
                std::this_thread::yield(); // as in a write, let others run
                const Platform::ScopedLock nested(inner);
            }
        });
    }
    while (logging < THREADS) {
        std::this_thread::yield();
    }
    for (int i = 0; i < 5; ++i) { // a hang here is the failure
        EXPECT_EQ(resultInChild([] { return 0; }), 0);
    }
    isOver = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(CriticalSection, LetsOneComeInBetweenWhoAwaitsItsHolder) {
    Platform::CriticalSection section;
    std::atomic<pid_t> waitingThread{0};
    std::atomic<bool> hasReturned{false};
    section.awaitHolder(); // there is none
    section.lock();
    section.awaitHolder(); // the caller itself
    std::thread waiting([&] {
        waitingThread = gettid();
        section.awaitHolder();
        hasReturned = true;
    });
    waitUntilAsleep(waitingThread);
    EXPECT_FALSE(hasReturned);
    section.unlock();
    section.lock();        // without a pause
    while (!hasReturned) { // a hang here is the failure
        std::this_thread::yield();
    }
    section.unlock();
    waiting.join();
}

namespace {

/// Uses the whole library with the deepest name allowed, in a thread with a small stack.
void* logDeep(void* texts) {
    std::string name = "a";
    for (int i = 1; i < 1000; ++i) {
        name += ".a";
    }
    CallingAppender appender([texts](const LogMessage& message) {
        static_cast<std::vector<std::string>*>(texts)->push_back(message.getText());
    });
    Logger& deepest = LoggerFactory::getLogger(name);
    Logger& root = LoggerFactory::getRootLogger();
    root.addAppender(&appender);
    root.setLevel(Level::INFO, false);
    root.setExpirationTime(Util::TimeUtils::Time(1, Util::TimeUtils::HOUR));
    LoggerFactory::loggerExists(name);
    LoggerFactory::getLoggerNames();
    deepest.info("seen", 0, "");
    root.removeAppender(&appender);
    deepest.info("unseen", 0, "");
    return nullptr;
}

} // namespace

TEST(Logger, OfTheDeepestNameTakesLittleStack) {
    std::vector<std::string> texts;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 128 * 1024);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, logDeep, &texts), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_THAT(texts, ElementsAre("seen"));
}

namespace {

std::string textOf(std::int64_t seconds) {
    return Util::TimeUtils::Time(static_cast<std::uint64_t>(seconds), Util::TimeUtils::SEC).toString();
}

std::string systemsTextOf(std::time_t seconds) {
    std::tm local;
    char text[30];
    strftime(text, sizeof text, "%Y.%m.%d %H:%M:%S", localtime_r(&seconds, &local));
    return std::string(text) + ":000000";
}

} // namespace

/// A thread of the application is reading a time zone, and so holds the system's lock around all conversions.
TEST(Time, InAForkedChildDoesNotNeedTheSystemsLock) {
    setTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
    const std::int64_t now = std::time(nullptr);
    std::vector<std::pair<std::int64_t, std::string>> expected;
    for (std::int64_t day = -300; day < 3000; ++day) {
        const std::int64_t seconds = now + day * 86400 + day;
        expected.emplace_back(seconds, systemsTextOf(seconds));
    }
    textOf(now);
    const TemporaryDirectory directory;
    const std::string zone = directory / "zone";
    ASSERT_EQ(mkfifo(zone.c_str(), 0600), 0);
    setenv("TZ", zone.c_str(), 1);
    std::thread reading(tzset);
    int writer = -1;
    while (writer < 0) { // until the thread is reading it
        writer = open(zone.c_str(), O_WRONLY | O_NONBLOCK);
        std::this_thread::yield();
    }
    const pid_t child = fork();
    if (child == 0) {
        const bool areRight = std::all_of(expected.begin(), expected.end(), [](const auto& time) {
            return textOf(time.first) == time.second; // a hang here is the failure
        });
        _exit(areRight ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    close(writer);
    reading.join();
    EXPECT_EQ(textOf(now), systemsTextOf(now)) << "the zone has changed";
}

TEST(FileAppender, ReportsALineThatAFullDiskDidNotTake) {
    const TemporaryDirectory directory;
    std::filesystem::create_symlink("/dev/full", directory / "f0");
    std::filesystem::create_directory(directory / "f1"); // prevents the link from being renamed
    RecordingListener failures;
    LogManager::registerCommandListener("EXCEPTION", &failures);
    AppenderValues values("f");
    values.dir = directory.path();
    FileAppender appender(values, {});
    appender.output(makeMessage("a"));
    EXPECT_THAT(failures.arguments, ElementsAre(HasSubstr("Exception = outputFileStream_.fail()\n")));
}

TEST(AsynchronousDispatcher, GivesItsThreadTheConfiguredPriorityAsFarAsItMay) {
    const auto threadNice = [] { return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())); };
    const int processNice = threadNice();
    std::vector<int> nices;
    CallingAppender appender([&](const LogMessage&) { nices.push_back(threadNice()); }, false);
    AsynchronousDispatcher& dispatcher = AsynchronousDispatcher::instance();
    const LogMessage message = makeMessage("a");
    for (const char* priority : {"25", "0", "26"}) {
        Util::Properties properties;
        properties["zav.log.AsynchronousDispatcher.priority"] = priority;
        dispatcher.configure(properties);
        dispatcher.enqueue(message, true);
        dispatcher.registerAsynchronousAppender(&appender);
        dispatcher.stop();
        dispatcher.unregisterAsynchronousAppender(&appender);
    }
    EXPECT_THAT(nices, ElementsAre(processNice, std::min(processNice + 10, 19), Le(processNice)));
}
