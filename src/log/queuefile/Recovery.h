#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ZAV {
namespace Log {

class Appender;
class QueueFile;

/// What becomes of messages that earlier processes have left.
struct Recovery {
    bool hasAppenders = false;
    std::uint64_t messages =
        0;                  ///< that at least one appender has written, for the first time in this process
    std::uint64_t lost = 0; ///< for which there was no memory
    std::vector<std::string> failed; ///< names of the appenders that could not write a message

    /// \return whether nothing waits any more
    bool isAllGiven() const noexcept { return hasAppenders && failed.empty(); }
};

/// Gives each appender the messages that it has not got yet, in their order, and marks in the file how far it
/// has come. One that fails gets nothing more: what it has not written waits for the next time. The caller
/// must be in a `LibraryCall`. What a command listener throws at a report is shown on the standard error
/// stream.
/// \param file has something of earlier processes
Recovery recover(QueueFile& file, const std::vector<Appender*>& appenders);

} // namespace Log
} // namespace ZAV
