#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace ZAV {
namespace Log {

class LogMessage;

/// How many messages an appender has failed to write since the library was loaded, and how often it could not
/// roll, pack or delete a file, whether or not the failure could be reported.
namespace FailureCount {

void add() noexcept;

std::uint64_t get() noexcept;

} // namespace FailureCount

/// The report of a message that an appender could not write.
namespace FailureReport {

/// Delivers the command "EXCEPTION".
///
/// A listener may log in response, and that message may fail as well; its report is delivered too. To end
/// loops, reports in response to reports are delivered eight deep, and no more than 1024 of them in one call
/// of the application or for one message of the queue; the rest are dropped.
/// \throw whatever a listener throws
void deliver(const std::string& text);

/// Counts a message that could not be written, and delivers its report.
/// \param reason the text of the `LogException`; null for any other exception
/// \throw whatever a listener throws
void deliverFor(const LogMessage& message, const char* reason);

/// Counts and reports a failure that does not concern a message.
/// \param activity what has failed, in a word
/// \throw whatever a listener throws
void deliverWithoutMessage(const std::string& activity, const std::string& reason);

} // namespace FailureReport

class Appender;

/// Reports each appender that begins to fail on the standard error stream, once until it has written again.
/// While the command "EXCEPTION" has a listener, nothing is written. All operations may be called from any
/// thread.
class FailureNotice {
public:
    /// Enables or disables the notices, which are disabled by default, and forgets which appenders fail.
    static void setEnabled(bool enable) noexcept;
    static bool isEnabled() noexcept { return wanted.load(std::memory_order_relaxed); }

    /// Notes that an appender could not write a message.
    static void noteFailed(const Appender* appender, const std::string& name, const char* reason) noexcept {
        if (isEnabled()) {
            tell(appender, name, reason);
        }
    }

    /// Notes that an appender has written; costs one load while none fails. A line that was only buffered
    /// does not count.
    static void noteWritten(const Appender* appender) noexcept {
        if (mayFail(appender)) {
            noteWrittenAgain(appender);
        }
    }

    /// Forgets an appender that is being destroyed.
    static void forget(const Appender* appender) noexcept;

private:
    /// \return whether an appender may be among the failing ones; false is certain
    static bool mayFail(const Appender* appender) noexcept {
        const std::uint64_t known = failing.load(std::memory_order_relaxed);
        return known != 0 && (known & markOf(appender)) != 0;
    }
    static std::uint64_t markOf(const Appender* appender) noexcept {
        constexpr unsigned SHIFT = 6; // neighbouring objects differ in the bits above it
        constexpr unsigned MARKS = 64;
        return std::uint64_t{1} << ((reinterpret_cast<std::uintptr_t>(appender) >> SHIFT) % MARKS);
    }
    static void tell(const Appender* appender, const std::string& name, const char* reason) noexcept;
    static void noteWrittenAgain(const Appender* appender) noexcept;

    static inline std::atomic<bool> wanted{false};
    static inline std::atomic<std::uint64_t> failing{0}; ///< the marks of the failing appenders
};

} // namespace Log
} // namespace ZAV
