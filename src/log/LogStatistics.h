#pragma once

#include <cstdint>

namespace ZAV {
namespace Log {

/// What the library has counted since it was loaded. A forked child goes on from its parent's numbers, but
/// nothing waits in it.
struct LogStatistics {
    /// Messages that loggers have handed to the queue of the asynchronous appenders; and those that an
    /// appender or a listener logged while another thread held the logger, if they were discarded before they
    /// came that far.
    std::uint64_t queued = 0;
    /// Messages of the queue that were given to the asynchronous appenders, each counted once, however many
    /// appenders there are, and also if they failed to write it.
    std::uint64_t delivered = 0;
    /// Messages that no appender got: pushed out of a full queue, taken from it while there was no appender,
    /// or shown on the standard error stream when the process ended; and of those that a thread had to put
    /// off, the oldest beyond 10,000.
    std::uint64_t discarded = 0;
    /// Failures of appenders to write a message, synchronous ones too, or to look after their files: each
    /// would be a command "EXCEPTION".
    std::uint64_t failed = 0;
    /// Messages that wait in the queue or are being delivered: `queued` is the sum of `delivered`,
    /// `discarded` and this.
    std::uint64_t waiting = 0;
    /// Messages that earlier processes had left in the file of the queue, and that `LogManager::init` gave to
    /// the asynchronous appenders. They count as `queued` and as `delivered` too.
    std::uint64_t recovered = 0;
};

} // namespace Log
} // namespace ZAV
