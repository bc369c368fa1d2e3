#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ZAV {
namespace Log {

class Appender;
class QueueFile;

/// Result of recovering the messages that earlier processes have left.
struct Recovery {
    bool hasAppenders = false;
    std::uint64_t messages = 0;      ///< written by at least one appender, for the first time in this process
    std::uint64_t lost = 0;          ///< messages for which there was no memory
    std::vector<std::string> failed; ///< names of the appenders that failed to write a message

    /// \return whether no message waits any more
    bool isAllGiven() const noexcept { return hasAppenders && failed.empty(); }
};

/// Delivers to each appender, in order, the messages that it has not got yet, and marks its progress in the
/// file. An appender that fails gets no more messages: those that it has not written wait for the next
/// recovery. The caller must be in a `LibraryCall`. An exception that a command listener throws for a report
/// is shown on the standard error stream.
/// \param file must contain something of earlier processes
Recovery recover(QueueFile& file, const std::vector<Appender*>& appenders);

} // namespace Log
} // namespace ZAV
