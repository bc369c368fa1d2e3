#pragma once

#include "log/AppenderOptions.h"

#include <string>

namespace ZAV {
namespace Log {

/// \return a line as the text of an event: in UTF-16, what is no UTF-8 as U+FFFD and NUL as `\x00`, with a blank
///         behind a "%" that the viewer would take for a mark, and cut where the system would refuse it
std::wstring eventTextOf(const std::string& line);

/// Reports each line to the event log, as an event of a source that the key `source` names. The system takes
/// events from any number of threads.
class EventLogAppender : public Appender {
public:
    /// \throw LogException if the system does not take the source
    explicit EventLogAppender(const AppenderOptions& options);
    ~EventLogAppender() override;

private:
    void doOutput(const LogMessage& message) override;

    const AppenderOptions options_;
    void* const source_; ///< a handle of the system
};

} // namespace Log
} // namespace ZAV
