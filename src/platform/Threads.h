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

/// Disables cancellation (`pthread_cancel`) of its thread in a scope: a request takes effect afterwards. For
/// work that must not be left half done, and for functions that must not throw. Does nothing where threads
/// cannot be cancelled (Windows).
class NoCancellation {
public:
    NoCancellation() noexcept;
    ~NoCancellation();
    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;

private:
    int before_ = 0; ///< the state to restore
};

/// A cancellation point: ends the calling thread if that was requested. For the beginning of a call, where
/// nothing is half done.
void actOnCancellation();

/// The exception that unwinds a cancelled thread. A `catch (...)` must rethrow it.
#if defined(_WIN32)
class ForcedUnwind {
    ForcedUnwind() = default; // no thread is cancelled: nothing throws it
};
#else
using ForcedUnwind = abi::__forced_unwind;
#endif

/// Blocks all signals in its thread for a scope, except those raised by the thread's own faults. Threads
/// started meanwhile inherit the mask for good, so the application's signals go to the application's threads.
/// Does nothing where there are no signals (Windows).
class NoSignals {
public:
    NoSignals();
    ~NoSignals();
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;

private:
    struct Mask;
    const std::unique_ptr<Mask> before_; ///< the thread's previous mask
};

/// \return whether a wait of a fraction of a millisecond ends about when it should. On Windows every wait lasts until a tick of the
///         system's timer.
bool hasFineTimer() noexcept;

/// Sleeps for a few dozen microseconds.
/// \return false, without sleeping, where there is no fine timer
bool sleepBriefly() noexcept;

/// \return the system's id of the calling thread. Not cached: each call is a system call on Linux.
std::uint64_t currentThreadId() noexcept;

constexpr int THREAD_PRIORITY_LOWEST_VALUE = -2;
constexpr int THREAD_PRIORITY_NORMAL_VALUE = 0;
constexpr int THREAD_PRIORITY_HIGHEST_VALUE = 2;

/// Requests a priority for the calling thread.
///
/// If the user lacks the right to the requested priority, it is raised as far as allowed, and the call
/// succeeds.
/// \param priority one of the three values above
/// \return 0, or the system's error number if the request failed
int setCurrentThreadPriority(int priority);

/// A thread-specific pointer, with a function that destroys its target when the thread ends.
///
/// A `thread_local` object with a destructor will not do: some compilers free its memory before calling the
/// destructor.
class ThreadSlot {
public:
    /// \param destroy called in the ending thread with its pointer, unless that is null; must not throw
    explicit ThreadSlot(void (*destroy)(void* object));
    ThreadSlot(const ThreadSlot&) = delete;
    ThreadSlot& operator=(const ThreadSlot&) = delete;

    /// \return the calling thread's pointer; null before the first `set` and after the object was destroyed
    void* get() const noexcept;

    /// \return false if the pointer could not be stored
    bool set(void* object) noexcept;

private:
    unsigned long key_ = 0;
    bool isValid_ = false;
};

/// Runs a function before a signal or an uncaught exception takes its usual effect. The function runs in a
/// thread of its own, since the interrupted code may hold any lock; the interrupted thread waits meanwhile.
/// Nothing runs in a forked child. There may be one hook at a time.
///
/// On Linux it handles the given signals; on Windows, regardless of these, console events and system
/// exceptions.
class SignalHook {
public:
    /// Only one may exist at a time.
    /// \param function called for each signal; signals that arrive together share one call
    /// \param timeout how long a signal waits for it
    /// \throw std::exception if a signal cannot be handled or no thread can be started
    SignalHook(const std::vector<int>& signals, void (*function)(std::chrono::milliseconds timeout),
               std::chrono::milliseconds timeout);

    /// Restores the previous handlers, unless they were changed meanwhile. Waits for the function if it is
    /// running.
    ~SignalHook();

    SignalHook(const SignalHook&) = delete;
    SignalHook& operator=(const SignalHook&) = delete;

private:
    struct Handlers;
    const std::unique_ptr<Handlers> handlers_;
};

} // namespace Platform
} // namespace ZAV
