#pragma once

#include "log/appenders/AppenderBuilder.h"

#include <iosfwd>

namespace ZAV {
namespace Log {

/// Makes a `StdoutAppender`; adds the keys "ostream" ("cerr", "clog", or anything else for standard output)
/// and "escape".
class StdoutAppenderBuilder : public AppenderBuilder {
public:
    explicit StdoutAppenderBuilder(const std::string& name);

    Appender* build() override;
    StdoutAppenderBuilder& configure(const Util::Properties& properties) override;

private:
    std::ostream* stream_;
    bool escape_ = false;
};

} // namespace Log
} // namespace ZAV
