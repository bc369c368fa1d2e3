#pragma once

#include "platform/CriticalSection.h"

#include <map>
#include <string>

namespace ZAV {
namespace Log {

class CommandListener;

/// The process-wide registry of command listeners. All operations may be called from any thread.
class CommandBus {
public:
    /// Never destroyed, since threads may still log while the process ends.
    static CommandBus& instance();

    void registerListener(const std::string& name, CommandListener* listener);

    /// Removes all listeners of a name.
    void unregisterListeners(const std::string& name);

    /// Removes a listener from all names. Once it returns, no other thread is calling that listener.
    void unregisterListener(const CommandListener* listener);

    /// Removes all listeners of all names.
    void clearCommandListeners();

    /// Calls the listeners of a name in the order of their registration, holding the lock. An exception of a
    /// listener ends the delivery and reaches the caller.
    void deliver(const std::string& name, const std::string& argument);

private:
    using Listeners = std::multimap<std::string, CommandListener*>;

    /// A walk through the listeners; while one goes on, none is taken out of the map.
    class Delivery;

    CommandBus() = default;

    void remove(Listeners::iterator first, Listeners::iterator last) ZAV_LOG_REQUIRES(listenersLock_);
    void eraseRemoved() ZAV_LOG_REQUIRES(listenersLock_);

    Platform::CriticalSection listenersLock_;
    Listeners listeners_ ZAV_LOG_GUARDED_BY(listenersLock_); ///< null for one that was removed in a delivery
    int deliveries_ ZAV_LOG_GUARDED_BY(listenersLock_) = 0;  ///< more than one if listeners issue commands
};

} // namespace Log
} // namespace ZAV
