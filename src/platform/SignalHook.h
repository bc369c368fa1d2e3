#pragma once

#include <chrono>
#include <memory>
#include <vector>

namespace ZAV {
namespace Platform {

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
