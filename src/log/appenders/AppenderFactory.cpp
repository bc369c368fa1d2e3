#include "log/appenders/AppenderFactory.h"

#include "log/appenders/FileAppender.h"
#include "log/appenders/RollingFileAppender.h"
#include "log/appenders/SimpleAppenders.h"
#include "log/filters/MessageFilters.h"

namespace ZAV {
namespace Log {

AppenderBuilder& AppenderBuilder::configure(const Util::Properties& properties) {
    values_ = AppenderValues(values_.name, reader_, properties);
    filters_ = makeFilters(values_);
    return *this;
}

Appender* StdoutAppenderBuilder::build() {
    return new StdoutAppender(values_, filters_);
}

Appender* FileAppenderBuilder::build() {
    return new FileAppender(values_, filters_);
}

Appender* SimpleFileAppenderBuilder::build() {
    return new SimpleFileAppender(values_, filters_);
}

Appender* RollingFileAppenderBuilder::build() {
    return new RollingFileAppender(values_, filters_);
}

} // namespace Log
} // namespace ZAV
