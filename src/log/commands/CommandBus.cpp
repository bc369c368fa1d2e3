#include "log/commands/CommandBus.h"

#include "log/CommandListener.h"
#include "log/reentrancy/LibraryCall.h"

#include <algorithm>
#include <iterator>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

CommandBus& CommandBus::instance() {
    static CommandBus& bus = *new CommandBus;
    return bus;
}

namespace {

/// So that no thread makes it while another one forks.
const CommandBus& madeAtLoad = CommandBus::instance();

} // namespace

void CommandBus::registerListener(const std::string& name, CommandListener* listener) {
    const ScopedLock lock(listenersLock_);
    const ScopedLock mapLock(mapLock_);
    listeners_.emplace(name, Entry{listener, ++lastNumber_});
    listener->wasRegistered_ = true;
}

/// A name without listeners does not wait for the bus: an appender may be destroyed under a lock that a
/// listener wants.
void CommandBus::unregisterListeners(const std::string& name) noexcept {
    if (!hasListener(name)) {
        return;
    }
    const ScopedLock lock(listenersLock_);
    const ScopedLock mapLock(mapLock_);
    listeners_.erase(name);
}

void CommandBus::unregisterListener(const CommandListener* listener) {
    const ScopedLock lock(listenersLock_);
    const ScopedLock mapLock(mapLock_);
    for (auto entry = listeners_.begin(); entry != listeners_.end();) {
        entry = entry->second.listener == listener ? listeners_.erase(entry) : std::next(entry);
    }
}

void CommandBus::clearCommandListeners() {
    const ScopedLock lock(listenersLock_);
    const ScopedLock mapLock(mapLock_);
    listeners_.clear();
}

void CommandBus::forgetListeners() {
    const ScopedLock mapLock(mapLock_);
    listeners_.clear();
}

bool CommandBus::hasListener(const std::string& name) noexcept {
    const ScopedLock lock(mapLock_);
    return listeners_.count(name) != 0;
}

void CommandBus::deliver(const std::string& name, const std::string& argument) {
    const LibraryCall call;
    const ScopedLock lock(listenersLock_);
    const std::vector<Entry> entries = entriesOf(name);
    if (entries.empty()) {
        return;
    }
    // A listener may change the caller's strings, and the others still get the command as it was given.
    const struct {
        std::string name;
        std::string argument;
    } given{name, argument};
    for (const Entry& entry : entries) {
        if (isStillRegistered(given.name, entry)) {
            entry.listener->onCommand(given.argument);
        }
    }
}

std::vector<CommandBus::Entry> CommandBus::entriesOf(const std::string& name) {
    std::vector<Entry> entries;
    const ScopedLock lock(mapLock_);
    const auto range = listeners_.equal_range(name);
    for (auto entry = range.first; entry != range.second; ++entry) {
        entries.push_back(entry->second);
    }
    return entries;
}

bool CommandBus::isStillRegistered(const std::string& name, const Entry& entry) {
    const ScopedLock lock(mapLock_);
    const auto range = listeners_.equal_range(name);
    return std::any_of(range.first, range.second, [&entry](const Listeners::value_type& standing) {
        return standing.second.number == entry.number;
    });
}

} // namespace Log
} // namespace ZAV
