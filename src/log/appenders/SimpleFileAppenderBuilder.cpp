#include "log/appenders/SimpleFileAppenderBuilder.h"

#include "log/appenders/SimpleFileAppender.h"
#include "log/config/AppenderSettings.h"
#include "log/config/KeyNames.h"

namespace ZAV {
namespace Log {

SimpleFileAppenderBuilder::SimpleFileAppenderBuilder(const std::string& name)
    : AppenderBuilder(name), file_(name) {}

Appender* SimpleFileAppenderBuilder::build() {
    return new SimpleFileAppender(name_, synchronous_, filters_, dir_, file_, options_);
}

SimpleFileAppenderBuilder& SimpleFileAppenderBuilder::configure(const Util::Properties& properties) {
    AppenderBuilder::configure(properties);
    const AppenderSettings settings(name_, properties);
    settings.get(AppenderSetting::DIR, dir_);
    settings.get(AppenderSetting::FILE_NAME, file_);
    options_.read(settings);
    return *this;
}

} // namespace Log
} // namespace ZAV
