#pragma once

#include <functional>
#include <vector>

namespace ZAV {
namespace Log {

/// A stretch of a thread's work in which it may hold a lock of the library while appenders and command
/// listeners run, which may log themselves.
///
/// A logging call from within must not wait for another logger: its holder may be waiting for a lock that
/// this thread holds. Such a call is deferred and made as soon as the thread has left its outermost scope,
/// where it holds no lock of the library any more.
class LoggingScope {
public:
    /// Opens a scope; to be constructed before the lock is taken.
    LoggingScope();

    /// Closes the scope; the outermost one makes the deferred calls. What they throw is dropped: nobody is
    /// left who made them.
    ~LoggingScope();

    LoggingScope(const LoggingScope&) = delete;
    LoggingScope& operator=(const LoggingScope&) = delete;

    /// \return true if this scope lies within another one of the thread
    bool isNested() const { return outermost_ != this; }

    /// Keeps a call for the end of the thread's outermost scope.
    void defer(std::function<void()> call);

    /// \return true if the calling thread is in a scope
    static bool isOpen();

private:
    struct DeferredCall {
        std::function<void()> make;
        bool answersReport; ///< made by a listener that hears of a failed message
    };

    void makeCalls() noexcept;

    LoggingScope* outermost_;
    std::vector<DeferredCall> calls_; ///< of the outermost scope
};

} // namespace Log
} // namespace ZAV
