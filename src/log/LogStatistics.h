#pragma once

/// \file
/// Counts what became of the messages, for a program's own monitoring:
///
///     #include "log/LogManager.h"
///
///     bool hasLostMessages() {
///         const ZAV::Log::LogStatistics statistics = ZAV::Log::LogManager::statistics();
///         return statistics.discarded > 0 || statistics.failed > 0;
///     }

#include <cstdint>

namespace ZAV {
namespace Log {

/// What the library has counted since it was loaded. A forked child continues with its parent's numbers,
/// except that nothing is waiting there.
struct LogStatistics {
    /// Messages that loggers have put into the queue of the asynchronous appenders; also those that an
    /// appender or a listener logged while another thread was using the logger, if they were discarded before
    /// they got there.
    std::uint64_t queued = 0;
    /// Messages of the queue that were delivered to the asynchronous appenders. Each counts once, however
    /// many appenders there are, and even if they failed to write it.
    std::uint64_t delivered = 0;
    /// Messages that no appender got: removed from a full queue, taken from it while there was no appender,
    /// or written to the standard error stream when the process ended; and of the messages that a thread has
    /// deferred, the oldest beyond 10,000.
    std::uint64_t discarded = 0;
    /// Failures of synchronous and asynchronous appenders to write a message or to manage their files. Each
    /// is what a command "EXCEPTION" reports.
    std::uint64_t failed = 0;
    /// Messages in the queue or in delivery: `queued` is the sum of `delivered`, `discarded` and this.
    std::uint64_t waiting = 0;
    /// Messages that earlier processes had left in the queue file, and that `LogManager::init` delivered to
    /// the asynchronous appenders. They count as `queued` and `delivered` too.
    std::uint64_t recovered = 0;
};

} // namespace Log
} // namespace ZAV
