#pragma once

#include <cstdint>
#include <vector>

namespace ZAV {
namespace Log {

class Appender;
class QueueFile;
class StoredQueue;

/// What becomes of messages that earlier processes have left.
struct Recovery {
    bool hasAppenders = false;
    std::uint64_t messages = 0; ///< that at least one appender was given
    std::uint64_t failures = 0; ///< of an appender to write one
};

/// Gives each appender the messages that it has not got yet, in their order. The caller must be in a
/// `LibraryCall`. What a command listener throws at a report is shown on the standard error stream.
/// \param file where their progress is marked; null for none
/// \param stopsAtFailure whether an appender that has failed gets no further message
Recovery recover(const StoredQueue& stored, const std::vector<Appender*>& appenders, QueueFile* file,
                 bool stopsAtFailure);

} // namespace Log
} // namespace ZAV
