#include "log/commands/CommandBus.h"

#include "log/CommandListener.h"
#include "log/commands/DeferredCalls.h"

#include <iterator>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

CommandBus& CommandBus::instance() {
    static CommandBus& bus = *new CommandBus;
    return bus;
}

void CommandBus::registerListener(const std::string& name, CommandListener* listener) {
    const ScopedLock lock(listenersLock_);
    listeners_.emplace(name, listener);
}

void CommandBus::unregisterListeners(const std::string& name) {
    const ScopedLock lock(listenersLock_);
    listeners_.erase(name);
}

void CommandBus::unregisterListener(const std::string& name, const CommandListener* listener) {
    const ScopedLock lock(listenersLock_);
    const auto range = listeners_.equal_range(name);
    for (auto entry = range.first; entry != range.second;) {
        entry = entry->second == listener ? listeners_.erase(entry) : std::next(entry);
    }
}

void CommandBus::clearCommandListeners() {
    const ScopedLock lock(listenersLock_);
    listeners_.clear();
}

void CommandBus::deliver(const std::string& name, const std::string& argument) {
    const DeferredCalls deferredUntilUnlocked;
    const ScopedLock lock(listenersLock_);
    const auto range = listeners_.equal_range(name);
    for (auto entry = range.first; entry != range.second; ++entry) {
        entry->second->onCommand(argument);
    }
}

} // namespace Log
} // namespace ZAV
