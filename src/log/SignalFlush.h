#pragma once

/// \file
/// Delivers queued messages when a signal ends the process.

#include "zav-util/Export.h"

#include <chrono>
#include <memory>
#include <vector>

namespace ZAV {
namespace Log {

/// Delivers what is queued for asynchronous appenders when a signal is about to end the process:
///
///     #include "log/LogSession.h"
///     #include <csignal>
///
///     int main() {
///         const ZAV::Log::LogSession session("app.properties");
///         const ZAV::Log::SignalFlush guard({SIGTERM, SIGINT, SIGSEGV, SIGABRT});
///         // ...
///     }
///
/// It does the same when an uncaught exception ends the process. Afterwards the signal has its usual effect:
/// an earlier handler is called, and the exit status is unchanged. An ignored signal stays ignored.
///
/// The consumer thread and a thread of this object deliver the messages, while the thread that received the
/// signal waits. If that thread was interrupted inside the library, or holds anything else that the delivery
/// needs, the wait ends with the timeout. It also does if SIGABRT or a fault's signal, such as SIGSEGV, is
/// sent to the process with `kill` and the system picks one of these two threads to receive it, which it does
/// only if the main thread blocks it or is slower. Only a queue file helps against SIGKILL; see `queueFile`
/// in the documentation of the configuration. Nothing is delivered in a forked child.
///
/// On Windows, console events and system exceptions are handled, whichever signals are given.
class ZAV_LOG_API SignalFlush {
public:
    /// Only one object may exist at a time. It may be created in any thread; a program that becomes a daemon
    /// creates it after its last fork, since it has no effect in a child. A handler runs on the thread's
    /// signal stack (`sigaltstack`) if there is one; without it, a stack overflow cannot be handled.
    /// \param timeout how long a signal waits for the delivery at most; 0 or less for not at all
    /// \throw LogException if another object exists, or if a signal cannot be handled
    explicit SignalFlush(const std::vector<int>& signals,
                         std::chrono::milliseconds timeout = std::chrono::seconds(2));

    /// Restores the earlier handlers, except where a handler was changed meanwhile. Waits for a delivery in
    /// progress.
    ~SignalFlush();

    SignalFlush(const SignalFlush&) = delete;
    SignalFlush& operator=(const SignalFlush&) = delete;

private:
    struct Inside;
    const std::unique_ptr<Inside> inside_;
};

} // namespace Log
} // namespace ZAV
