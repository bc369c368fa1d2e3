#pragma once

#include "log/appenders/FileOptions.h"
#include "log/async/BatchAppender.h"
#include "platform/OutputFile.h"

namespace ZAV {
namespace Log {

/// Appends each message, with process details, to a single file. The file is opened and closed for every
/// write, so that other programs may move or delete it in between. A relative directory is taken from the
/// one that the process is in when the appender is made.
class SimpleFileAppender : public BatchAppender {
public:
    /// \param dir directory of the file; it is never created
    SimpleFileAppender(const std::string& name, bool synchronous, const Filters& filters,
                       const std::string& dir, const std::string& file,
                       const FileOptions& options = FileOptions());
    ~SimpleFileAppender() override;

protected:
    /// A write that fails is not noticed.
    /// \throw LogException if the file cannot be opened; the next message tries again
    void outputLine(const LogMessage& message) override ZAV_LOG_REQUIRES(criticalSection_);
    void writeLines(std::string_view text, std::size_t& written) override ZAV_LOG_REQUIRES(criticalSection_);

private:
    void open(Platform::OutputFile& file) const;
    void render(const LogMessage& message) ZAV_LOG_REQUIRES(criticalSection_);

    const std::string givenPath_; ///< for texts
    const std::string path_;      ///< the same, wherever the process goes
    const FileOptions options_;
};

} // namespace Log
} // namespace ZAV
