#pragma once

#include "log/appenders/AppenderBuilder.h"
#include "log/appenders/FileOptions.h"
#include "zav-util/TimeUtils.h"

#include <cstdint>

namespace ZAV {
namespace Log {

class AppenderSettings;

/// Makes a `FileAppender`; adds the keys of its files. "fileMaxSize" and "fileMaxLifetime" count only when
/// their units are present, too.
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
    FileOptions options_;
};

} // namespace Log
} // namespace ZAV
