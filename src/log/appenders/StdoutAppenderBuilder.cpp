#include "log/appenders/StdoutAppenderBuilder.h"

#include "log/appenders/StdoutAppender.h"
#include "log/config/AppenderSettings.h"
#include "log/config/KeyNames.h"

#include <iostream>

namespace ZAV {
namespace Log {

namespace {

std::ostream* streamNamed(const std::string& name) {
    if (name == "cerr") {
        return &std::cerr;
    }
    return name == "clog" ? &std::clog : &std::cout;
}

} // namespace

StdoutAppenderBuilder::StdoutAppenderBuilder(const std::string& name)
    : AppenderBuilder(name), stream_(&std::cout) {}

Appender* StdoutAppenderBuilder::build() {
    return new StdoutAppender(name_, synchronous_, filters_, stream_, escape_);
}

StdoutAppenderBuilder& StdoutAppenderBuilder::configure(const Util::Properties& properties) {
    AppenderBuilder::configure(properties);
    std::string streamName = "cout";
    const AppenderSettings settings(name_, properties);
    settings.get(AppenderSetting::OSTREAM, streamName);
    stream_ = streamNamed(streamName);
    escape_ = settings.getBoolean(AppenderSetting::ESCAPE, escape_);
    return *this;
}

} // namespace Log
} // namespace ZAV
