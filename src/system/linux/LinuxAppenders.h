#pragma once

#include "log/AppenderOptions.h"
#include "log/Level.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Log {

/// \return the severity of a level, as defined in <syslog.h>; the journal calls it priority
int severityOf(Level::LogLevel level);

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

/// Writes each message as an entry of systemd's journal, with everything known about it as fields. Needs no
/// lock: the libsystemd call is thread-safe and works in a forked child.
class JournaldAppender : public Appender {
public:
    using Appender::Appender;

private:
    /// \throw LogException if the journal does not accept it
    void doOutput(const LogMessage& message) override;
};

/// \return the fields of a journal entry, each as "NAME=value": everything in the message, with the text excluding the
///         pairs. If names collide, the message's own pairs get the name before those of the context.
std::vector<std::string> journalFieldsOf(const LogMessage& message);

} // namespace Log
} // namespace ZAV
