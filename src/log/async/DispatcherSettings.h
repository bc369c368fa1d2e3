#pragma once

#include "zav-util/TimeUtils.h"

#include <cstdint>
#include <string>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// Stands for a consumer thread that keeps the priority it was created with.
constexpr int DEFAULT_PRIORITY_MARK = 1000;

/// The tuning of the asynchronous dispatcher.
struct DispatcherSettings {
    /// The length at which the queue pushes its oldest message out, so that one less can wait. A negative
    /// configured number is a huge one here, so that nothing is ever pushed out.
    std::uint64_t maxQueueSize = 1024;

    /// How long the consumer waits between two rounds when nobody wakes it; 0 if the first message
    /// in an empty queue is to wake it.
    Util::TimeUtils::Time waitingPeriod = Util::TimeUtils::Time(2, Util::TimeUtils::SEC);

    /// What the consumer thread asks `Platform::setCurrentThreadPriority` for, or `DEFAULT_PRIORITY_MARK`.
    int priority = DEFAULT_PRIORITY_MARK;

    /// Whether a full queue makes the logging call wait for room, instead of pushing the oldest message out.
    bool overflowBlocks = false;

    /// Takes the settings that the properties name. A value that is no number is reported on the standard
    /// error stream and leaves its setting as it was.
    void read(const Util::Properties& properties);

    /// \return what a fresh process with the properties would have: the default of each setting that they do
    ///         not name. A bad value is reported and leaves the setting as it is here.
    DispatcherSettings renewedBy(const Util::Properties& properties) const;
};

/// Where the queue is kept.
struct QueueFileSettings {
    /// Takes what the properties name; without a path of theirs the queue is kept in memory. A size that is
    /// none is reported on the standard error stream and leaves it as it was.
    void read(const Util::Properties& properties);

    /// \return what a fresh process with the properties would have, but for a size that is none
    QueueFileSettings renewedBy(const Util::Properties& properties) const;

    std::string name;                                     ///< as the key has it; empty for memory
    std::string path;                                     ///< from the root; empty for memory
    std::uint64_t size = std::uint64_t{16} * 1024 * 1024; ///< in bytes, of a file that is made
};

} // namespace Log
} // namespace ZAV
