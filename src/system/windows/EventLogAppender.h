#pragma once

#include "log/AppenderOptions.h"

#include <string>

namespace ZAV {
namespace Log {

/// \return a line as the text of an event: in UTF-16, with invalid UTF-8 as U+FFFD and NUL as `\x00`, a blank after
///         each "%" that the viewer would take for a placeholder, and truncated to what the system accepts
std::wstring eventTextOf(const std::string& line);

/// Reports each line to the event log, as an event of the source that the key `source` names. Thread-safe,
/// since the system's call is.
class EventLogAppender : public Appender {
public:
    /// \throw LogException if the system does not accept the source
    explicit EventLogAppender(const AppenderOptions& options);
    ~EventLogAppender() override;

private:
    void doOutput(const LogMessage& message) override;

    const AppenderOptions options_;
    void* const source_; ///< a system handle
};

} // namespace Log
} // namespace ZAV
