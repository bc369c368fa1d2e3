#pragma once

#include "log/AppenderOptions.h"

namespace ZAV {
namespace Log {

/// Passes each line to the C library's `syslog`, which prefixes the name `ident` and the process id.
///
/// `syslog` has one name and one facility per process. So these are set for each line, under a lock that
/// serialises appenders. Calls made by the application itself are not serialised with them.
class SyslogAppender : public Appender {
public:
    /// \throw LogException for an unknown facility or a name that log readers could not parse
    explicit SyslogAppender(const AppenderOptions& options);

private:
    void doOutput(const LogMessage& message) override;

    const AppenderOptions options_;
    const char* const ident_; ///< never freed
    const int facility_;
};

} // namespace Log
} // namespace ZAV
