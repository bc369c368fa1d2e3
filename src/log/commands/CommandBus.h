#pragma once

#include "platform/CriticalSection.h"
#include "platform/NeverDestroyed.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Log {

/// The commands that the library itself issues.
namespace CommandName {
constexpr char LOWER_DYNAMIC_LEVELS[] = "DynamicLogLevelFilterSoft"; ///< with the name of a level
constexpr char FAILURE_REPORT[] = "EXCEPTION";                       ///< with a report
} // namespace CommandName

class CommandListener;

/// The process-wide registry of command listeners. All operations may be called from any thread.
class CommandBus : public Platform::NeverDestroyed<CommandBus> {
public:
    void registerListener(const std::string& name, CommandListener* listener);

    /// Removes all listeners of a name. Once it returns, no other thread is calling them by that name. It
    /// takes no memory, so that destructors may call it.
    void unregisterListeners(const std::string& name) noexcept;

    /// Removes a listener from all names. Once it returns, no other thread is calling that listener. What
    /// becomes of other listeners meanwhile is not waited for.
    /// \param limit after which it returns all the same; none if there is none
    void unregisterListener(const CommandListener* listener,
                            std::optional<std::chrono::milliseconds> limit = std::nullopt);

    /// Removes all listeners of all names.
    void clearCommandListeners();

    /// The same, but does not wait for a command that is being delivered: the process ends.
    void forgetListeners();

    /// \return whether a name has a listener at this moment
    bool hasListener(const std::string& name) noexcept;

    /// Calls the listeners of a name in the order of their registration, one command at a time. A listener
    /// that is removed meanwhile is not called, nor is one that is added. All get the argument as it was when
    /// the first one was called, whatever a listener does to the caller's string. An exception of a listener
    /// ends the delivery and reaches the caller.
    void deliver(const std::string& name, const std::string& argument);

private:
    struct Entry {
        CommandListener* listener;
        std::uint64_t number; ///< no other entry ever has the same
    };
    using Listeners = std::multimap<std::string, Entry>;

    /// A call of a listener, on the stack of the thread that delivers.
    class Call;

    friend NeverDestroyed;
    CommandBus();

    std::vector<Entry> entriesOf(const std::string& name);
    bool isStillRegistered(const std::string& name, const Entry& entry) ZAV_LOG_REQUIRES(mapLock_);
    bool isCalledElsewhere(const CommandListener* listener);
    void beginInChild();

    Platform::CriticalSection listenersLock_; ///< held while a command is delivered, and by every change

    /// Held for each single step, so that a forked child finds the map whole.
    Platform::CriticalSection mapLock_{Platform::AWAITED_BY_FORK};
    Listeners listeners_ ZAV_LOG_GUARDED_BY(mapLock_);
    std::uint64_t lastNumber_ ZAV_LOG_GUARDED_BY(mapLock_) = 0;
    const Call* innermostCall_ ZAV_LOG_GUARDED_BY(mapLock_) = nullptr; ///< of the one thread that delivers
};

} // namespace Log
} // namespace ZAV
