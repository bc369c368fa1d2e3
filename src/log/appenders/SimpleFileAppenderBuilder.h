#pragma once

#include "log/appenders/AppenderBuilder.h"

namespace ZAV {
namespace Log {

/// Makes a `SimpleFileAppender`; adds the keys "dir" and "file".
class SimpleFileAppenderBuilder : public AppenderBuilder {
public:
    explicit SimpleFileAppenderBuilder(const std::string& name);

    Appender* build() override;
    SimpleFileAppenderBuilder& configure(const Util::Properties& properties) override;

private:
    std::string dir_ = ".";
    std::string file_; ///< the appender's name unless it is configured
};

} // namespace Log
} // namespace ZAV
