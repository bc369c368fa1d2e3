#include "log/commands/CommandBus.h"

#include "log/CommandListener.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Process.h"
#include "platform/Threads.h"

#include <algorithm>
#include <iterator>
#include <thread>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

const CommandBus& madeAtLoad = CommandBus::instance();

/// Polling is rare: only while another thread is calling the very listener that is removed.
constexpr std::chrono::milliseconds POLL_INTERVAL{1};

} // namespace

class CommandBus::Call {
public:
    /// The call begins if the entry is still registered.
    Call(CommandBus& bus, const std::string& name, const Entry& entry)
        : bus_(bus), listener_(entry.listener) {
        const ScopedLock lock(bus_.mapLock_);
        hasBegun_ = bus_.isStillRegistered(name, entry);
        if (hasBegun_) {
            outer_ = bus_.innermostCall_;
            bus_.innermostCall_ = this;
        }
    }
    ~Call() {
        if (hasBegun_) {
            const ScopedLock lock(bus_.mapLock_);
            bus_.innermostCall_ = outer_;
        }
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    bool hasBegun() const { return hasBegun_; }
    const CommandListener* listener() const { return listener_; }
    const Call* outer() const { return outer_; }

private:
    CommandBus& bus_;
    const CommandListener* const listener_;
    const Call* outer_ = nullptr;
    bool hasBegun_ = false;
};

CommandBus::CommandBus() {
    Platform::atFork(nullptr, [] { instance().beginInChild(); });
}

void CommandBus::registerListener(const std::string& name, CommandListener* listener) {
    const ScopedLock lock(listenersLock_);
    const ScopedLock mapLock(mapLock_);
    listeners_.emplace(name, Entry{listener, ++lastNumber_});
    listener->wasRegistered_ = true;
}

/// Does not wait for the bus if the name has no listeners: an appender may be destroyed under a lock that a
/// listener waits for.
void CommandBus::unregisterListeners(const std::string& name) noexcept {
    if (!hasListener(name)) {
        return;
    }
    const ScopedLock lock(listenersLock_);
    const ScopedLock mapLock(mapLock_);
    listeners_.erase(name);
}

void CommandBus::unregisterListener(const CommandListener* listener,
                                    std::optional<std::chrono::milliseconds> limit) {
    {
        const ScopedLock mapLock(mapLock_);
        for (auto entry = listeners_.begin(); entry != listeners_.end();) {
            entry = entry->second.listener == listener ? listeners_.erase(entry) : std::next(entry);
        }
    }
    const Platform::NoCancellation noCancellation; // the caller may be a destructor
    const auto begin = std::chrono::steady_clock::now();
    while (isCalledElsewhere(listener) && (!limit || std::chrono::steady_clock::now() - begin < *limit)) {
        std::this_thread::sleep_for(POLL_INTERVAL);
    }
}

/// The delivering thread holds `listenersLock_`, so `tryLock` fails in any other.
bool CommandBus::isCalledElsewhere(const CommandListener* listener) {
    {
        const ScopedLock lock(mapLock_);
        const Call* call = innermostCall_;
        while (call != nullptr && call->listener() != listener) {
            call = call->outer();
        }
        if (call == nullptr) {
            return false;
        }
    }
    if (!listenersLock_.tryLock()) {
        return true;
    }
    listenersLock_.unlock();
    return false;
}

/// A delivery of another thread does not continue in the child, and its lock is free there.
void CommandBus::beginInChild() {
    if (listenersLock_.tryLock()) {
        const ScopedLock lock(listenersLock_, Platform::ADOPT_LOCK);
        if (listenersLock_.isHeldOnce()) {
            const ScopedLock mapLock(mapLock_);
            innermostCall_ = nullptr;
        }
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
    // A listener may change the caller's strings; the others still get the original command.
    const struct {
        std::string name;
        std::string argument;
    } given{name, argument};
    for (const Entry& entry : entries) {
        const Call called(*this, given.name, entry);
        if (called.hasBegun()) {
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
    const auto range = listeners_.equal_range(name);
    return std::any_of(range.first, range.second, [&entry](const Listeners::value_type& standing) {
        return standing.second.number == entry.number;
    });
}

namespace {

/// The destructor may run while the process ends, which a call that never returns must not prevent.
constexpr std::chrono::seconds MAX_WAIT_AT_EXIT{2};

} // namespace

CommandListener::~CommandListener() {
    if (wasRegistered_) {
        CommandBus::instance().unregisterListener(this, MAX_WAIT_AT_EXIT);
    }
}

} // namespace Log
} // namespace ZAV
