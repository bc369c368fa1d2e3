#pragma once

#include "log/Appender.h"
#include "log/appenders/BatchAppender.h"
#include "log/config/AppenderValues.h"
#include "platform/OpenFiles.h"
#include "zav-util/FileUtils.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

namespace ZAV {
namespace Log {

// The appenders that hold no file open: to a standard stream, and to a single file.

/// Writes each message as one flushed line to a standard stream. Relies on the streams to serialise writes,
/// which they do as long as they are synchronised with C's (`sync_with_stdio`).
class StdoutAppender : public Appender {
public:
    StdoutAppender(const AppenderValues& values, const Filters& filters);

protected:
    /// A write that fails is not reported.
    void doOutput(const LogMessage& message) override;

private:
    std::ostream* const stream_;
    const std::shared_ptr<const LineLayout> layout_;
};

/// Appends each message, with process details, to a single file. The file is opened and closed for every
/// write, so that other programs may move or delete it in between. Its directory is never created; a relative
/// path is resolved when the appender is created.
class SimpleFileAppender : public BatchAppender {
public:
    SimpleFileAppender(const AppenderValues& values, const Filters& filters);
    ~SimpleFileAppender() override;

    std::string fileName() const override { return Util::FileUtils::baseName(path_); }

protected:
    /// A write that fails is not reported.
    /// \throw LogException if the file cannot be opened; retried with the next message
    void outputLine(const LogMessage& message) override ZAV_LOG_REQUIRES(criticalSection_);
    void writeLines(std::string_view text, std::size_t& written) override ZAV_LOG_REQUIRES(criticalSection_);

private:
    void write(std::string_view text) ZAV_LOG_REQUIRES(criticalSection_);
    void open(Platform::OutputFile& file) const;
    void render(const LogMessage& message) ZAV_LOG_REQUIRES(criticalSection_);

    const AppenderValues values_;
    const std::shared_ptr<const LineLayout> layout_;
    const std::string path_; ///< absolute
    bool mayEndInPartialLine_ ZAV_LOG_GUARDED_BY(criticalSection_) = true;
};

} // namespace Log
} // namespace ZAV
