#pragma once

#include "platform/CriticalSection.h"

#include <atomic>

namespace ZAV {
namespace Log {

/// The one lock over the loggers' settings, their lists of appenders and their children.
///
/// Nothing is waited for while it is held, and no appender or listener runs: so settings can be changed, and
/// loggers looked up and made, from anywhere. A change spreads to a whole subtree in one step.
/// \return a lock that is never destroyed, since threads may still log while the process ends
Platform::CriticalSection& treeLock();

/// What every message passes before it is dispatched. It is closed for the moment in which the settings and
/// appenders of all loggers change places, so that each message meets the old ones or the new ones alone.
///
/// A call passes with its logger's lock held. Once the gate is closed and each logger's lock has been free
/// for a moment, no message is being dispatched: whoever takes the lock later finds the gate closed, gives
/// the lock back and waits here, and a call from inside an appender or a listener puts its message off.
class DispatchGate {
public:
    /// \return whether a call that has just taken its logger's lock must give it back; one read
    static bool isClosed() noexcept { return closed.load(std::memory_order_relaxed); }

    /// Waits until the gate is open. The caller must hold no lock of the library, and be in no appender or
    /// listener.
    static void awaitOpen();

    /// Keeps the gate closed while it lives.
    class Closed {
    public:
        Closed();
        ~Closed();
        Closed(const Closed&) = delete;
        Closed& operator=(const Closed&) = delete;
    };

private:
    static Platform::CriticalSection& gateLock();
    static void openInChild();
    static const bool isForked;

    static inline std::atomic<bool> closed{false};
};

} // namespace Log
} // namespace ZAV
