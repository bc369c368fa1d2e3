#pragma once

#include "log/AppenderOptions.h"

namespace ZAV {
namespace Log {

/// Hands each line to `syslog` of the C library, with the process id and the name `ident` in front of it.
///
/// That function belongs to the whole process, with its one name and its one facility. So each line sets
/// those of its appender, and the library's lock keeps two appenders apart. Nothing keeps them apart from
/// calls of the application's own.
class SyslogAppender : public Appender {
public:
    /// \throw LogException for a facility that does not exist and a name that cannot be read back
    explicit SyslogAppender(const AppenderOptions& options);

private:
    void doOutput(const LogMessage& message) override;

    const AppenderOptions options_;
    const char* const ident_; ///< kept for ever
    const int facility_;
};

} // namespace Log
} // namespace ZAV
