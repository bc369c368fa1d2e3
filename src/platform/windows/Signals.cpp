#include "platform/Threads.h"

#include "platform/Process.h"

#include <atomic>
#include <cstdlib>
#include <exception>
#include <thread>
#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

/// Never destroyed: other code may have saved one of the handlers to chain to it later. Made with the first
/// hook.
struct Requests : NeverDestroyed<Requests> {
    HANDLE wanted = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    std::atomic<unsigned> asked{0};  ///< number of requests made
    std::atomic<unsigned> served{0}; ///< number of these for which the function has run
    std::atomic<bool> isActive{false};
    std::atomic<bool> isEnding{false};
    std::atomic<ULONGLONG> timeout{0}; ///< in milliseconds
    void (*function)(std::chrono::milliseconds timeout) = nullptr;
    LPTOP_LEVEL_EXCEPTION_FILTER filterBefore = nullptr;
    std::terminate_handler terminateBefore = nullptr;
};

/// Requests a run of the function and waits for it.
void runFunction() {
    Requests& state = Requests::instance();
    if (!state.isActive) {
        return;
    }
    const ULONGLONG begin = GetTickCount64();
    const unsigned mine = ++state.asked;
    SetEvent(state.wanted);
    while (static_cast<int>(state.served - mine) < 0 && GetTickCount64() - begin < state.timeout) {
        Sleep(1);
    }
}

BOOL WINAPI onConsoleEvent(DWORD) {
    runFunction();
    return FALSE; // so that earlier handlers are called next
}

LONG WINAPI onException(EXCEPTION_POINTERS* exception) {
    runFunction();
    const LPTOP_LEVEL_EXCEPTION_FILTER before = Requests::instance().filterBefore;
    return before != nullptr ? before(exception) : EXCEPTION_CONTINUE_SEARCH;
}

[[noreturn]] void onTerminate() {
    runFunction();
    Requests::instance().isActive = false;
    if (Requests::instance().terminateBefore != nullptr) {
        Requests::instance().terminateBefore();
    }
    std::abort();
}

void serve() {
    Requests& state = Requests::instance();
    while (!state.isEnding || state.asked != state.served) {
        WaitForSingleObject(state.wanted, state.isEnding ? 0 : INFINITE);
        const unsigned last = state.asked;
        if (last != state.served) { // otherwise the hook has ended, this one or the one before
            state.function(std::chrono::milliseconds(state.timeout));
            state.served = last;
        }
    }
}

} // namespace

struct SignalHook::Handlers {
    ~Handlers() {
        SetConsoleCtrlHandler(onConsoleEvent, FALSE);
        const LPTOP_LEVEL_EXCEPTION_FILTER last =
            SetUnhandledExceptionFilter(Requests::instance().filterBefore);
        if (last != onException) {
            SetUnhandledExceptionFilter(last); // set by somebody else later
        }
        if (std::get_terminate() == onTerminate) {
            std::set_terminate(Requests::instance().terminateBefore);
        }
        Requests::instance().isActive = false;
        Requests::instance().isEnding = true;
        SetEvent(Requests::instance().wanted);
        if (thread.joinable()) {
            thread.join();
        }
    }

    std::thread thread;
};

SignalHook::SignalHook(const std::vector<int>&, void (*function)(std::chrono::milliseconds timeout),
                       std::chrono::milliseconds timeout)
    : handlers_(std::make_unique<Handlers>()) {
    Requests& state = Requests::instance();
    state.function = function;
    state.timeout = static_cast<ULONGLONG>(timeout.count() < 0 ? 0 : timeout.count());
    state.isEnding = false;
    state.served = state.asked.load(); // requests too late for the hook before
    handlers_->thread = std::thread(serve);
    state.isActive = true;
    state.terminateBefore = std::set_terminate(onTerminate);
    state.filterBefore = SetUnhandledExceptionFilter(onException);
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

SignalHook::~SignalHook() = default;

} // namespace Platform
} // namespace ZAV
