#pragma once

#include "log/Appender.h"
#include "log/appenders/FileOptions.h"
#include "platform/CriticalSection.h"

namespace ZAV {
namespace Log {

/// Appends each message, with process details, to a single file. The file is opened and closed for every
/// message, so that other programs may move or delete it in between. A relative directory is taken from the
/// one that the process is in when the appender is made.
class SimpleFileAppender : public Appender {
public:
    /// \param dir directory of the file; it is never created
    SimpleFileAppender(const std::string& name, bool synchronous, const Filters& filters,
                       const std::string& dir, const std::string& file,
                       const FileOptions& options = FileOptions());

protected:
    /// A write that fails is not noticed.
    /// \throw LogException if the file cannot be opened; the next message tries again
    void doOutput(const LogMessage& message) override;

private:
    const std::string givenPath_; ///< for texts
    const std::string path_;      ///< the same, wherever the process goes
    Platform::CriticalSection criticalSection_{Platform::AWAITED_BY_FORK}; ///< one message at a time
    const FileOptions options_;
};

} // namespace Log
} // namespace ZAV
