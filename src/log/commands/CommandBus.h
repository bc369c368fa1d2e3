#pragma once

#include "platform/CriticalSection.h"
#include "platform/Process.h"

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
    /// allocates nothing, so that destructors may call it.
    void unregisterListeners(const std::string& name) noexcept;

    /// Removes a listener from all names. Once it returns, no other thread is calling that listener. It does
    /// not wait for calls of other listeners.
    /// \param limit after which it returns in any case; by default it waits without one
    void unregisterListener(const CommandListener* listener,
                            std::optional<std::chrono::milliseconds> limit = std::nullopt);

    /// Removes all listeners of all names.
    void clearCommandListeners();

    /// The same, but without waiting for a command that is being delivered, since the process ends.
    void forgetListeners();

    /// \return whether a name has a listener at this moment
    bool hasListener(const std::string& name) noexcept;

    /// Calls the listeners of a name in the order of their registration, one command at a time. A listener
    /// that is removed meanwhile is not called, nor is one that is added. All get the argument as it was when
    /// the first one was called, whatever a listener does to the caller's string. An exception from a
    /// listener ends the delivery and reaches the caller.
    void deliver(const std::string& name, const std::string& argument);

private:
    struct Entry {
        CommandListener* listener;
        std::uint64_t number; ///< never reused
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

    Platform::CriticalSection
        listenersLock_; ///< held while a command is delivered, and by changes that wait for it

    /// Held only for single accesses, so that a forked child finds the map consistent.
    Platform::CriticalSection mapLock_{Platform::AWAITED_BY_FORK};
    Listeners listeners_ ZAV_LOG_GUARDED_BY(mapLock_);
    std::uint64_t lastNumber_ ZAV_LOG_GUARDED_BY(mapLock_) = 0;
    const Call* innermostCall_ ZAV_LOG_GUARDED_BY(mapLock_) = nullptr; ///< of the delivering thread
};

} // namespace Log
} // namespace ZAV
