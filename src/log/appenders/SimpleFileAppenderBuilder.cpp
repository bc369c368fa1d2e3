#include "log/appenders/SimpleFileAppenderBuilder.h"

#include "log/appenders/SimpleFileAppender.h"

namespace ZAV {
namespace Log {

SimpleFileAppenderBuilder::SimpleFileAppenderBuilder(const std::string& name)
    : AppenderBuilder(name), file_(name) {}

Appender* SimpleFileAppenderBuilder::build() {
    return new SimpleFileAppender(name_, synchronous_, filters_, dir_, file_);
}

SimpleFileAppenderBuilder& SimpleFileAppenderBuilder::configure(const Util::Properties& properties) {
    AppenderBuilder::configure(properties);
    getSetting(properties, "dir", dir_);
    getSetting(properties, "file", file_);
    return *this;
}

} // namespace Log
} // namespace ZAV
