#pragma once

#include "zav-util/TimeUtils.h"

#include <cstdint>
#include <string>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// Means that the consumer thread keeps the priority it was created with.
constexpr int DEFAULT_PRIORITY_MARK = 1000;

/// Settings of the asynchronous dispatcher.
struct DispatcherSettings {
    /// The length at which the queue discards its oldest message, so that one less can wait. A negative
    /// configured number becomes a huge one, so that nothing is ever discarded.
    std::uint64_t maxQueueSize = 1024;

    /// How long the consumer waits between two rounds unless woken; 0 if the first message in an empty queue
    /// wakes it.
    Util::TimeUtils::Time waitingPeriod = Util::TimeUtils::Time(2, Util::TimeUtils::SEC);

    /// The consumer thread's argument to `Platform::setCurrentThreadPriority`, or `DEFAULT_PRIORITY_MARK`.
    int priority = DEFAULT_PRIORITY_MARK;

    /// Whether a logging call waits for room in a full queue, instead of discarding the oldest message.
    bool overflowBlocks = false;

    /// Reads the settings that the properties contain. A value that is not a number is reported on the
    /// standard error stream and leaves its setting unchanged.
    void read(const Util::Properties& properties);

    /// \return the settings that a fresh process with the properties would have, with defaults for those they
    ///         do not contain. An invalid value is reported and leaves the setting as it is here.
    DispatcherSettings renewedBy(const Util::Properties& properties) const;
};

/// Settings of the file that the queue is kept in.
struct QueueFileSettings {
    /// Reads the settings that the properties contain; without a path the queue is kept in memory. An invalid
    /// size is reported on the standard error stream and leaves the size unchanged.
    void read(const Util::Properties& properties);

    /// \return the settings that a fresh process with the properties would have; an invalid size leaves the
    ///         size as it is here
    QueueFileSettings renewedBy(const Util::Properties& properties) const;

    std::string name;                                     ///< value of the key; empty for memory
    std::string path;                                     ///< absolute; empty for memory
    std::uint64_t size = std::uint64_t{16} * 1024 * 1024; ///< in bytes, of a new file
};

} // namespace Log
} // namespace ZAV
