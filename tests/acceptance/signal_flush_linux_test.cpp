#include "LeavingProcess.h"

#include "log/LogException.h"
#include "log/SignalFlush.h"

#include <chrono>
#include <csignal>
#include <cstdlib>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;
using namespace testing;

namespace {

class FlushAtSignal : public LeavingProcess {
protected:
    /// Has a child process log and then end in some way.
    template <typename Function>
    int endBy(Function end) {
        std::filesystem::remove(directory_ / "a.log");
        return inProcess([&] {
            std::signal(SIGABRT, SIG_DFL);
            std::signal(SIGSEGV, SIG_DFL);
            init(lazy());
            LoggerFactory::getLogger("net").info("queued", 0, "");
            end();
        });
    }

    void expectDelivered() const { EXPECT_EQ(lastWordsOf("a.log"), std::vector<std::string>({"queued"})); }

    static SignalFlush makeGuard(std::chrono::milliseconds timeout = std::chrono::minutes(1)) {
        return SignalFlush({SIGTERM, SIGINT, SIGSEGV, SIGABRT}, timeout);
    }
};

} // namespace

#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__) // they install handlers of their own

static int* volatile nowhere = nullptr;

TEST_F(FlushAtSignal, DeliversAndLetsTheSignalEndTheProcess) {
    for (const int signal : {SIGTERM, SIGINT, SIGSEGV, SIGABRT}) {
        const int status = endBy([signal] {
            const auto guard = makeGuard();
            if (signal == SIGTERM || signal == SIGINT) {
                kill(getpid(), signal);
            } else {
                raise(signal); // to this thread: the consumer may receive it too, and cannot wait for itself
            }
            pause();
        });
        EXPECT_EQ(WTERMSIG(status), signal);
        expectDelivered();
    }
    EXPECT_EQ(WTERMSIG(endBy([] {
                  const auto guard = makeGuard();
                  *nowhere = 1;
              })),
              SIGSEGV);
    expectDelivered();
    EXPECT_EQ(WTERMSIG(endBy([] {
                  const auto guard = makeGuard();
                  std::abort();
              })),
              SIGABRT);
    expectDelivered();
}

TEST_F(FlushAtSignal, DeliversWhenNobodyCatchesAnException) {
    const int status = endBy([] {
        const SignalFlush guard({}, std::chrono::minutes(1));
        std::thread([] { throw 17; }).join();
    });
    EXPECT_EQ(WTERMSIG(status), SIGABRT);
    expectDelivered();
}

TEST_F(FlushAtSignal, LetsTheHandlerOfBeforeDecide) {
    const int status = endBy([] {
        std::signal(SIGTERM, [](int) { _exit(42); });
        const auto guard = makeGuard();
        raise(SIGTERM);
    });
    EXPECT_EQ(WEXITSTATUS(status), 42);
    expectDelivered();
    const int ignored = endBy([] {
        std::signal(SIGTERM, SIG_IGN);
        const auto guard = makeGuard();
        raise(SIGTERM);
        _exit(43);
    });
    EXPECT_EQ(WEXITSTATUS(ignored), 43);
}

TEST_F(FlushAtSignal, WaitsNoLongerThanItMayForAThreadInsideTheLibrary) {
    const int status = endBy([] {
        CallingAppender faulty([](const LogMessage&) { *nowhere = 1; }, false);
        LogManager::addAsynchronousAppender(&faulty); // so that the fault occurs in the consumer itself
        LoggerFactory::getRootLogger().addAppender(&faulty);
        const auto guard = makeGuard(std::chrono::milliseconds(100));
        LogManager::flush();
        pause();
    });
    EXPECT_EQ(WTERMSIG(status), SIGSEGV);
    const int inCall = endBy([] {
        CallingAppender faulty([](const LogMessage&) { *nowhere = 1; });
        LoggerFactory::getRootLogger().addAppender(&faulty);
        const auto guard = makeGuard();
        LoggerFactory::getLogger("other").info("fatal", 0, "");
    });
    EXPECT_EQ(WTERMSIG(inCall), SIGSEGV);
    expectDelivered();
}

TEST_F(FlushAtSignal, IsNoReasonForAProcessToGoOn) {
    pid_t child = -1;
    std::thread([&child] {
        child = fork();
        if (child == 0) {
            static const auto guard = makeGuard();
        }
    }).join();
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child); // a hang here is the failure
    EXPECT_EQ(status, 0);
}

TEST_F(FlushAtSignal, DoesNothingInAForkedChild) {
    const int status = endBy([] {
        const auto guard = makeGuard();
        const int child = inProcess([] { raise(SIGTERM); });
        _exit(WTERMSIG(child) == SIGTERM ? 0 : 1);
    });
    EXPECT_EQ(status, 0);
}

#endif

TEST_F(FlushAtSignal, ComesOneAtATimeAndTakesItsHandlersBack) {
    const auto handlerOf = [](int signal) {
        struct sigaction current = {};
        sigaction(signal, nullptr, &current);
        return current.sa_handler;
    };
    {
        const auto guard = makeGuard();
        EXPECT_NE(handlerOf(SIGTERM), SIG_DFL);
        EXPECT_THROW(makeGuard(), LogException);
    }
    EXPECT_EQ(handlerOf(SIGTERM), SIG_DFL);
    EXPECT_THROW(SignalFlush({SIGTERM, SIGKILL}), LogException);
    EXPECT_EQ(handlerOf(SIGTERM), SIG_DFL);
    const std::terminate_handler before = std::get_terminate();
    { const auto guard = makeGuard(); }
    EXPECT_EQ(std::get_terminate(), before);
}
