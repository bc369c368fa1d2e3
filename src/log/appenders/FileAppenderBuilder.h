#pragma once

#include "log/appenders/AppenderBuilder.h"
#include "zav-util/TimeUtils.h"

#include <cstdint>

namespace ZAV {
namespace Log {

class AppenderSettings;

/// Makes a `FileAppender`; adds the keys "dir", "file", "fileNumber", "fileMaxSize" with "fileMaxSizeUnit",
/// and "fileMaxLifetime" with "fileMaxLifetimeUnit". Each of the two pairs counts only when both keys are
/// present.
class FileAppenderBuilder : public AppenderBuilder {
public:
    explicit FileAppenderBuilder(const std::string& name);

    Appender* build() override;
    FileAppenderBuilder& configure(const Util::Properties& properties) override;

private:
    void configureSize(const AppenderSettings& settings);
    void configureLifetime(const AppenderSettings& settings);

    std::string dir_ = ".";
    std::string file_; ///< the appender's name unless it is configured
    std::uint64_t fileNumber_ = 3;
    std::uint64_t fileMaxSize_ = std::uint64_t{10} * 1024 * 1024; ///< bytes
    Util::TimeUtils::Time fileMaxLifetime_ = Util::TimeUtils::Time(1, Util::TimeUtils::DAY);
};

} // namespace Log
} // namespace ZAV
