#pragma once

#include "log/appenders/BatchAppender.h"
#include "log/config/AppenderValues.h"
#include "platform/OpenFiles.h"
#include "zav-util/FileUtils.h"

#include <memory>

namespace ZAV {
namespace Log {

/// Appends each message, by default with process details, to a single file. The file is opened and closed for
/// every write, so that other programs may move or delete it in between. Its directory is never created; a
/// relative path is resolved when the appender is created.
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
