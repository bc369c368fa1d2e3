#pragma once

#include "platform/CriticalSection.h"

#include <atomic>

namespace ZAV {
namespace Log {

/// The lock that guards all loggers' settings, appender lists and children.
///
/// No thread blocks or runs an appender or a listener while holding it, so settings can be changed, and
/// loggers looked up and created, from anywhere. A change applies to a whole subtree atomically.
/// \return the lock, which is never destroyed, since threads may still log while the process ends
Platform::CriticalSection& treeLock();

/// Gate that every message passes before its dispatch. It is closed while the settings and appenders of all
/// loggers are replaced, so that each message sees either only the old ones or only the new ones.
///
/// A call passes with its logger's lock held. Once the gate is closed and each logger's lock has been free at
/// least once, no message is being dispatched: a call that takes the lock later finds the gate closed,
/// releases the lock and waits here, and a call from inside an appender or a listener puts its message off.
class DispatchGate {
public:
    /// \return whether a call that has just taken its logger's lock must release it; a single atomic load
    static bool isClosed() noexcept { return closed.load(std::memory_order_relaxed); }

    /// Waits until the gate is open. The caller must hold no lock of the library, and not be inside an
    /// appender or a listener.
    static void awaitOpen();

    /// Keeps the gate closed during its lifetime.
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
