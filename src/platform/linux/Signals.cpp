#include "platform/Threads.h"

#include "platform/Process.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <exception>
#include <semaphore.h>
#include <string>
#include <system_error>
#include <thread>

namespace ZAV {
namespace Platform {

namespace {

constexpr int SIGNAL_COUNT = NSIG;
constexpr int ONE_SHOT = static_cast<int>(SA_RESETHAND);
constexpr long NANOSECONDS_A_SECOND = 1'000'000'000;

/// State shared with the signal handlers, which take no lock. Never destroyed: a handler may be running when
/// its hook is destroyed, and other code may have saved a handler to chain to it later.
struct Requests : NeverDestroyed<Requests> {
    Requests() { sem_init(&wanted, 0, 0); }

    sem_t wanted;                    ///< posted once per request
    std::atomic<unsigned> asked{0};  ///< number of requests made
    std::atomic<unsigned> served{0}; ///< number of these for which the function has run
    std::atomic<bool> isActive{false};
    std::atomic<bool> isEnding{false};
    std::atomic<long> timeout{0};        ///< in milliseconds
    std::atomic<unsigned> generation{0}; ///< of the process of the hook; differs in a forked child
    void (*function)(std::chrono::milliseconds timeout) = nullptr;
    struct sigaction before[SIGNAL_COUNT] = {};
    std::terminate_handler terminateBefore = nullptr;
};

const Requests& madeAtLoad = Requests::instance();

timespec now() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time;
}

long millisecondsSince(const timespec& begin) {
    const timespec end = now();
    const long nanoseconds = end.tv_nsec - begin.tv_nsec;
    return (end.tv_sec - begin.tv_sec) * 1000 + nanoseconds / (NANOSECONDS_A_SECOND / 1000);
}

/// Requests a run of the function and waits for it. Async-signal-safe.
void runFunction() {
    Requests& state = Requests::instance();
    if (!state.isActive || state.generation != forkGeneration()) {
        return;
    }
    const timespec begin = now();
    const unsigned mine = ++state.asked;
    sem_post(&state.wanted);
    while (static_cast<int>(state.served - mine) < 0 && millisecondsSince(begin) < state.timeout) {
        constexpr timespec STEP = {0, NANOSECONDS_A_SECOND / 1000};
        nanosleep(&STEP, nullptr);
    }
}

/// Gives a signal its default effect. One raised by a fault of this thread occurs again by itself.
void endBySignal(int signal, const siginfo_t* info) {
    struct sigaction byDefault = {};
    byDefault.sa_handler = SIG_DFL;
    sigaction(signal, &byDefault, nullptr);
    const bool isFault = info != nullptr && info->si_code > 0 &&
                         (signal == SIGSEGV || signal == SIGBUS || signal == SIGFPE || signal == SIGILL);
    if (!isFault) {
        raise(signal); // is delivered when the handler has returned
    }
}

void onSignal(int signal, siginfo_t* info, void* context) {
    const int error = errno;
    const struct sigaction before = Requests::instance().before[signal];
    if ((before.sa_flags & ONE_SHOT) != 0) {
        Requests::instance().before[signal].sa_handler = SIG_DFL;
        Requests::instance().before[signal].sa_flags = 0;
    }
    if ((before.sa_flags & SA_SIGINFO) != 0) {
        runFunction();
        before.sa_sigaction(signal, info, context);
    } else if (before.sa_handler == SIG_DFL) {
        runFunction();
        endBySignal(signal, info);
    } else {
        runFunction();
        before.sa_handler(signal);
    }
    errno = error;
}

[[noreturn]] void onTerminate() {
    runFunction();
    Requests::instance().isActive = false; // the signal that follows need not wait again
    if (Requests::instance().terminateBefore != nullptr) {
        Requests::instance().terminateBefore();
    }
    std::abort();
}

/// \return false on timeout
bool awaitRequest() {
    constexpr time_t SECONDS = 2;
    timespec end = {};
    clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_sec += SECONDS;
    return sem_clockwait(&Requests::instance().wanted, CLOCK_MONOTONIC, &end) == 0;
}

void serveRequests() {
    Requests& state = Requests::instance();
    const unsigned last = state.asked;
    if (last != state.served) {
        state.function(std::chrono::milliseconds(state.timeout));
        state.served = last;
    }
}

/// Ends when all other threads have ended, so as not to keep the process alive.
void serve() {
    markAsServing();
    while (!Requests::instance().isEnding && (awaitRequest() || !isOnlyThread())) {
        serveRequests();
    }
    serveRequests(); // those that came while the hook was being destroyed
}

bool isOurs(int signal) {
    struct sigaction current = {};
    sigaction(signal, nullptr, &current);
    return (current.sa_flags & SA_SIGINFO) != 0 && current.sa_sigaction == onSignal;
}

} // namespace

struct SignalHook::Handlers {
    ~Handlers() {
        for (const int signal : signals) {
            if (isOurs(signal)) {
                sigaction(signal, &Requests::instance().before[signal], nullptr);
            }
        }
        if (std::get_terminate() == onTerminate) {
            std::set_terminate(Requests::instance().terminateBefore);
        }
        Requests::instance().isActive = false;
        const bool isOwn =
            Requests::instance().generation == forkGeneration() && // otherwise it is the parent's
            thread.get_id() != std::this_thread::get_id(); // which is ending the process, as its last thread
        if (thread.joinable() && isOwn) {
            Requests::instance().isEnding = true;
            sem_post(&Requests::instance().wanted);
            thread.join();
        } else if (thread.joinable()) {
            thread.detach();
        }
    }

    /// Keeps the previous handler's mask and flags.
    void add(int signal) {
        struct sigaction ours = {};
        if (signal <= 0 || signal >= SIGNAL_COUNT || sigaction(signal, nullptr, &ours) != 0) {
            throw std::system_error(EINVAL, std::generic_category(), "signal " + std::to_string(signal));
        }
        const bool isIgnored = (ours.sa_flags & SA_SIGINFO) == 0 && ours.sa_handler == SIG_IGN;
        if (isIgnored || isOurs(signal)) {
            return; // programs started meanwhile must keep ignoring it; or it was given twice
        }
        Requests::instance().before[signal] = ours;
        ours.sa_sigaction = onSignal;
        ours.sa_flags = (ours.sa_flags & ~ONE_SHOT) | SA_SIGINFO | SA_ONSTACK;
        if (sigaction(signal, &ours, nullptr) != 0) {
            throw std::system_error(errno, std::generic_category(), "signal " + std::to_string(signal));
        }
        signals.push_back(signal);
    }

    std::vector<int> signals;
    std::thread thread;
};

SignalHook::SignalHook(const std::vector<int>& signals, void (*function)(std::chrono::milliseconds timeout),
                       std::chrono::milliseconds timeout)
    : handlers_(std::make_unique<Handlers>()) {
    Requests& state = Requests::instance();
    state.function = function;
    state.timeout = static_cast<long>(timeout.count());
    state.generation = forkGeneration();
    state.isEnding = false;
    state.terminateBefore = std::set_terminate(onTerminate);
    {
        const NoSignals noSignals;
        handlers_->thread = std::thread(serve);
    }
    state.isActive = true;
    for (const int signal : signals) {
        handlers_->add(signal);
    }
}

SignalHook::~SignalHook() = default;

} // namespace Platform
} // namespace ZAV
