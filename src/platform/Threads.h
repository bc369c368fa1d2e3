#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#if !defined(_WIN32)
#include <cxxabi.h>
#endif

namespace ZAV {
namespace Platform {

/// While it lives, its thread is not cancelled (`pthread_cancel`): a request takes effect afterwards. For
/// work that must not be left half done, and for functions that nothing may be thrown out of. Where threads
/// cannot be cancelled (Windows), it does nothing.
class NoCancellation {
public:
    NoCancellation() noexcept;
    ~NoCancellation();
    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;

private:
    int before_ = 0; ///< the state to return to
};

/// Ends the calling thread here if that was requested. For the beginning of a call, where nothing is half
/// done.
void actOnCancellation();

/// What the stack of a cancelled thread is unwound with. Whoever catches everything must let it pass.
#if defined(_WIN32)
class ForcedUnwind {
    ForcedUnwind() = default; // no thread is cancelled: nothing throws it
};
#else
using ForcedUnwind = abi::__forced_unwind;
#endif

/// While it lives, its thread receives no signals, but for those that its own faults raise; nor does, for
/// ever, a thread that it starts meanwhile. So the application's signals go to the application's threads.
/// Where there are no signals (Windows), it does nothing.
class NoSignals {
public:
    NoSignals();
    ~NoSignals();
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;

private:
    struct Mask;
    const std::unique_ptr<Mask> before_; ///< the signals that the thread blocked by itself
};

/// Has the calling thread sleep for a few dozen microseconds.
/// \return false, at once, where the system cannot wake a thread so soon (Windows)
bool sleepBriefly() noexcept;

/// \return the system's id of the calling thread. It is asked for anew each time, which takes a system call on Linux.
std::uint64_t currentThreadId() noexcept;

constexpr int THREAD_PRIORITY_LOWEST_VALUE = -2;
constexpr int THREAD_PRIORITY_NORMAL_VALUE = 0;
constexpr int THREAD_PRIORITY_HIGHEST_VALUE = 2;

/// Requests a priority for the calling thread.
///
/// If the user lacks the right to the requested priority, it is raised as far as the system allows, and the
/// call succeeds.
/// \param priority one of the three values above
/// \return 0, or the system's error number if the request failed
int setCurrentThreadPriority(int priority);

/// A pointer that each thread has for itself, with a function that destroys what it leads to when the thread
/// ends.
///
/// A thread-local object with a destructor would not do: some compilers free its memory before they call the
/// destructor.
class ThreadSlot {
public:
    /// \param destroy called in a thread that ends, with its pointer, unless that is null; must not throw
    explicit ThreadSlot(void (*destroy)(void* object));
    ThreadSlot(const ThreadSlot&) = delete;
    ThreadSlot& operator=(const ThreadSlot&) = delete;

    /// \return the calling thread's pointer; null before the first `set`, and once the object was destroyed
    void* get() const noexcept;

    /// \return false if the pointer could not be kept
    bool set(void* object) noexcept;

private:
    unsigned long key_ = 0;
    bool isValid_ = false;
};

/// Has a function run before a signal, or an exception that nobody catches, does to the process what it would
/// have done. A thread of its own runs it, since the code that the signal has met may hold any lock. The
/// thread that the signal came to waits meanwhile. In a forked child nothing is run.
///
/// Linux has signals; Windows has console events and exceptions of the system, whichever signals are named.
class SignalHook {
public:
    /// There may be one at a time.
    /// \param function called once for each signal that comes, and for several at once
    /// \param timeout how long a signal waits for it
    /// \throw std::exception if a signal can have no handler, or no thread can be started
    SignalHook(const std::vector<int>& signals, void (*function)(std::chrono::milliseconds timeout),
               std::chrono::milliseconds timeout);

    /// Has the handlers of before back in their place, unless they were changed meanwhile. Waits for the
    /// function if it is running.
    ~SignalHook();

    SignalHook(const SignalHook&) = delete;
    SignalHook& operator=(const SignalHook&) = delete;

private:
    struct Handlers;
    const std::unique_ptr<Handlers> handlers_;
};

} // namespace Platform
} // namespace ZAV
