#include "log/appenders/AppenderBuilder.h"

#include "log/commands/CommandBus.h"
#include "log/commands/CommandNames.h"
#include "log/config/AppenderSettings.h"
#include "log/config/KeyNames.h"
#include "log/filters/FilterLogLevel.h"
#include "log/filters/FilterLogLevelDynamic.h"
#include "log/filters/FilterLogger.h"
#include "log/filters/FilterMessageType.h"

#include <boost/make_shared.hpp>

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

} // namespace

AppenderBuilder::AppenderBuilder(const std::string& name) : name_(name) {}

AppenderBuilder::~AppenderBuilder() = default;

AppenderBuilder& AppenderBuilder::configure(const Util::Properties& properties) {
    const AppenderSettings settings(name_, properties);
    if (settings.has(AppenderSetting::ASYNCHRONOUS)) {
        synchronous_ = !settings.getBoolean(AppenderSetting::ASYNCHRONOUS, false);
    }
    if (settings.has(AppenderSetting::FILTERS)) {
        filters_.push_back(boost::make_shared<FilterLogger>(name_, properties));
    }
    if (settings.has(AppenderSetting::LEVEL)) {
        addLevelFilter(properties);
    }
    if (settings.has(AppenderSetting::MESSAGE_TYPE)) {
        filters_.push_back(boost::make_shared<FilterMessageType>(name_, properties));
    }
    return *this;
}

void AppenderBuilder::addLevelFilter(const Util::Properties& properties) {
    if (AppenderSettings(name_, properties).has(AppenderSetting::EXPIRATION)) {
        addDynamicLevelFilter(properties);
    } else {
        filters_.push_back(boost::make_shared<FilterLogLevel>(name_, properties));
    }
}

void AppenderBuilder::addDynamicLevelFilter(const Util::Properties& properties) {
    const boost::shared_ptr<FilterLogLevelDynamic> filter(new FilterLogLevelDynamic(name_, properties),
                                                          UnregisteringDeleter());
    filters_.push_back(filter);
    CommandBus::instance().registerListener(CommandName::LOWER_DYNAMIC_LEVELS, filter.get());
}

} // namespace Log
} // namespace ZAV
