#pragma once

#include "log/Appender.h"

#include <iosfwd>

namespace ZAV {
namespace Log {

/// Writes each message as one flushed line to a standard stream. It relies on the streams to serialise
/// writes, which they do as long as the application leaves them synchronised with C's (`sync_with_stdio`).
class StdoutAppender : public Appender {
public:
    /// \param stream not owned; it must serialise its writes itself, as the standard streams do
    /// \param escape whether each message is kept on one line
    StdoutAppender(const std::string& name, bool synchronous, const Filters& filters, std::ostream* stream,
                   bool escape = false);

protected:
    /// A write that fails is not noticed.
    void doOutput(const LogMessage& message) override;

private:
    std::ostream* stream_;
    const bool escape_;
};

} // namespace Log
} // namespace ZAV
