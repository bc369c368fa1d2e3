#pragma once

#include "log/Appender.h"

namespace ZAV {
namespace Log {

/// Writes each message as an entry of systemd's journal, with all that is known of it as fields. It has no
/// lock: the call of libsystemd may be made by any number of threads, and in a forked child.
class JournaldAppender : public Appender {
public:
    using Appender::Appender;

private:
    /// \throw LogException if the journal does not take it
    void doOutput(const LogMessage& message) override;
};

} // namespace Log
} // namespace ZAV
