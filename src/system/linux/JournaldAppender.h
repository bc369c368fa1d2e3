#pragma once

#include "log/Appender.h"

namespace ZAV {
namespace Log {

/// Writes each message as an entry of systemd's journal, with everything known about it as fields. Needs no
/// lock: the libsystemd call is thread-safe and works in a forked child.
class JournaldAppender : public Appender {
public:
    using Appender::Appender;

private:
    /// \throw LogException if the journal does not accept it
    void doOutput(const LogMessage& message) override;
};

} // namespace Log
} // namespace ZAV
