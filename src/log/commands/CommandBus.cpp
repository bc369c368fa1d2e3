#include "log/commands/CommandBus.h"

#include "log/CommandListener.h"
#include "log/commands/LoggingScope.h"

#include <iterator>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

class CommandBus::Delivery {
public:
    explicit Delivery(CommandBus& bus) ZAV_LOG_REQUIRES(bus.listenersLock_) : bus_(bus) {
        ++bus_.deliveries_;
    }

    ~Delivery() {
        bus_.listenersLock_.assumeExclusive(); // whoever made this object still holds the lock
        if (--bus_.deliveries_ == 0) {
            bus_.eraseRemoved();
        }
    }

    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

private:
    CommandBus& bus_;
};

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
    const auto range = listeners_.equal_range(name);
    remove(range.first, range.second);
}

void CommandBus::unregisterListener(const CommandListener* listener) {
    const ScopedLock lock(listenersLock_);
    for (auto entry = listeners_.begin(); entry != listeners_.end();) {
        const auto next = std::next(entry);
        if (entry->second == listener) {
            remove(entry, next);
        }
        entry = next;
    }
}

void CommandBus::clearCommandListeners() {
    const ScopedLock lock(listenersLock_);
    remove(listeners_.begin(), listeners_.end());
}

void CommandBus::deliver(const std::string& name, const std::string& argument) {
    const LoggingScope scope;
    const ScopedLock lock(listenersLock_);
    const Delivery delivery(*this);
    const auto range = listeners_.equal_range(name);
    for (auto entry = range.first; entry != range.second; ++entry) {
        if (entry->second != nullptr) {
            entry->second->onCommand(argument);
        }
    }
}

void CommandBus::remove(Listeners::iterator first, Listeners::iterator last) {
    for (auto entry = first; entry != last; ++entry) {
        entry->second = nullptr;
    }
    if (deliveries_ == 0) {
        listeners_.erase(first, last);
    }
}

void CommandBus::eraseRemoved() {
    for (auto entry = listeners_.begin(); entry != listeners_.end();) {
        entry = entry->second == nullptr ? listeners_.erase(entry) : std::next(entry);
    }
}

} // namespace Log
} // namespace ZAV
