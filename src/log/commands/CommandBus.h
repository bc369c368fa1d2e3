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

    /// Removes one listener of a name. Once it returns, no other thread is calling that listener.
    void unregisterListener(const std::string& name, const CommandListener* listener);

    /// Removes all listeners of all names.
    void clearCommandListeners();

    /// Calls the listeners of a name in the order of their registration, holding the lock. An exception of a
    /// listener ends the delivery and reaches the caller.
    void deliver(const std::string& name, const std::string& argument);

private:
    CommandBus() = default;

    Platform::CriticalSection listenersLock_;
    std::multimap<std::string, CommandListener*> listeners_ ZAV_LOG_GUARDED_BY(listenersLock_);
};

} // namespace Log
} // namespace ZAV
