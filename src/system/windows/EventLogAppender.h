#pragma once

#include "log/AppenderOptions.h"

namespace ZAV {
namespace Log {

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
