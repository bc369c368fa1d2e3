#pragma once

#include "log/Appender.h"
#include "log/config/AppenderValues.h"

#include <iosfwd>
#include <memory>

namespace ZAV {
namespace Log {

/// Writes each message as one flushed line to a standard stream. Relies on the streams to serialise writes,
/// which they do as long as they are synchronised with C's (`sync_with_stdio`).
class StdoutAppender : public Appender {
public:
    StdoutAppender(const AppenderValues& values, const Filters& filters);

protected:
    /// A write that fails is not reported.
    void doOutput(const LogMessage& message) override;

private:
    std::ostream* const stream_;
    const std::shared_ptr<const LineLayout> layout_;
};

} // namespace Log
} // namespace ZAV
