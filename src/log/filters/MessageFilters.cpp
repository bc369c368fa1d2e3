#include "log/filters/MessageFilters.h"

#include "log/LogMessage.h"
#include "log/commands/CommandBus.h"
#include "log/commands/CommandNames.h"
#include "log/config/AppenderValues.h"
#include "log/filters/FilterLogLevelDynamic.h"

#include <boost/make_shared.hpp>

#include <algorithm>

namespace ZAV {
namespace Log {

namespace {

/// Takes a dynamic filter off the command bus before it goes: its appender may never come into service, and a
/// command that another thread issues meanwhile must not reach a filter that is gone.
struct UnregisteringDeleter {
    void operator()(FilterLogLevelDynamic* filter) const {
        CommandBus::instance().unregisterListener(filter);
        delete filter;
    }
};

boost::shared_ptr<MessageFilter> makeLevelFilter(Level::LogLevel level,
                                                 const std::optional<Util::TimeUtils::Time>& expiration) {
    if (!expiration) {
        return boost::make_shared<FilterLogLevel>(level);
    }
    const boost::shared_ptr<FilterLogLevelDynamic> filter(new FilterLogLevelDynamic(level, *expiration),
                                                          UnregisteringDeleter());
    CommandBus::instance().registerListener(CommandName::LOWER_DYNAMIC_LEVELS, filter.get());
    return filter;
}

} // namespace

bool FilterLogger::accept(const LogMessage& message) {
    return std::any_of(loggerNames_.begin(), loggerNames_.end(), [&message](const std::string& prefix) {
        return message.getLoggerName().compare(0, prefix.size(), prefix) == 0;
    });
}

bool FilterLogLevel::passes(const LogMessage& message) {
    return level_ <= message.getLevel();
}

bool FilterMessageType::accept(const LogMessage& message) {
    return message.getType() == messageType_;
}

std::list<boost::shared_ptr<MessageFilter>> makeFilters(const AppenderValues& values) {
    std::list<boost::shared_ptr<MessageFilter>> filters;
    if (values.prefixes) {
        filters.push_back(boost::make_shared<FilterLogger>(*values.prefixes));
    }
    if (values.level) {
        filters.push_back(makeLevelFilter(*values.level, values.expiration));
    }
    if (values.messageType) {
        filters.push_back(boost::make_shared<FilterMessageType>(*values.messageType));
    }
    return filters;
}

} // namespace Log
} // namespace ZAV
