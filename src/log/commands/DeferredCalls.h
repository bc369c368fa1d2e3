#pragma once

#include <functional>
#include <vector>

namespace ZAV {
namespace Log {

/// Logging calls that a command listener made and that would have had to wait for a logger's lock.
///
/// A thread that waits for a logger while it holds the command bus could wait for ever: the logger's holder
/// may be waiting for the bus, to report a failed appender. Such a call is kept here instead and made as soon
/// as the thread has released the bus, when the outermost scope of the thread ends.
class DeferredCalls {
public:
    /// Opens a scope on this thread; to be constructed before the command bus is locked.
    DeferredCalls();

    /// Closes the scope; the outermost one makes the calls. What they throw is dropped: they report failures
    /// of their own.
    ~DeferredCalls();

    DeferredCalls(const DeferredCalls&) = delete;
    DeferredCalls& operator=(const DeferredCalls&) = delete;

    /// \return true if the calling thread is delivering a command
    static bool areCollected();

    /// Keeps a call for the end of the calling thread's outermost scope; there must be one.
    static void add(std::function<void()> call);

private:
    void makeCalls() noexcept;

    std::vector<std::function<void()>> calls_;
    bool outermost_;
};

} // namespace Log
} // namespace ZAV
