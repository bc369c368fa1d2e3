#pragma once

#include "zav-util/Export.h"

#include <chrono>
#include <memory>
#include <vector>

namespace ZAV {
namespace Log {

/// Has what is queued for asynchronous appenders delivered when a signal is about to end the process:
///
///     int main() {
///         const ZAV::Log::LogSession session("app.properties");
///         const ZAV::Log::SignalFlush guard({SIGTERM, SIGINT, SIGSEGV, SIGABRT});
///         ...
///     }
///
/// The same is done when an exception that nobody catches ends the process. Then the signal does what it
/// would have done: a handler that was there before is called, and the exit status stays. An ignored signal
/// is ignored.
///
/// The delivery is the work of the consumer and of a thread of the object's own; the thread that the signal
/// came to waits for it. Where that thread was inside the library, or anywhere else where it holds what the
/// delivery needs, the wait ends with the timeout. Nothing helps against SIGKILL but the file of the queue,
/// see `queueFile` in the documentation of the configuration. In a forked child nothing is delivered.
///
/// On Windows the console's events and exceptions of the system are served, whichever signals are named.
class ZAV_LOG_API SignalFlush {
public:
    /// There may be one at a time. It may be made in any thread; a program that becomes a daemon makes it
    /// after its last fork, since a child is not served. A handler runs on the stack that the thread has for
    /// signals (`sigaltstack`), if any: without one an overflow of the stack is not served.
    /// \param timeout how long a signal waits at most; 0 or less: not at all
    /// \throw LogException if there is another one, or if a signal can have no handler
    explicit SignalFlush(const std::vector<int>& signals,
                         std::chrono::milliseconds timeout = std::chrono::seconds(2));

    /// Takes the handlers back, but for one that somebody else has changed meanwhile. Waits for a delivery
    /// that is under way.
    ~SignalFlush();

    SignalFlush(const SignalFlush&) = delete;
    SignalFlush& operator=(const SignalFlush&) = delete;

private:
    struct Inside;
    const std::unique_ptr<Inside> inside_;
};

} // namespace Log
} // namespace ZAV
