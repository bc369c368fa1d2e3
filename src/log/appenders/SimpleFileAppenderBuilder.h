#pragma once

#include "log/appenders/AppenderBuilder.h"
#include "log/appenders/FileOptions.h"

namespace ZAV {
namespace Log {

/// Makes a `SimpleFileAppender`; adds the keys of its file.
class SimpleFileAppenderBuilder : public AppenderBuilder {
public:
    explicit SimpleFileAppenderBuilder(const std::string& name);

    Appender* build() override;
    SimpleFileAppenderBuilder& configure(const Util::Properties& properties) override;

private:
    std::string dir_ = ".";
    std::string file_; ///< the appender's name unless it is configured
    FileOptions options_;
};

} // namespace Log
} // namespace ZAV
