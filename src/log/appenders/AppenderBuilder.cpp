#include "log/appenders/AppenderBuilder.h"

#include "log/commands/CommandBus.h"
#include "log/filters/FilterLogLevel.h"
#include "log/filters/FilterLogLevelDynamic.h"
#include "log/filters/FilterLogger.h"
#include "log/filters/FilterMessageType.h"
#include "zav-util/Properties.h"

#include <boost/make_shared.hpp>

namespace ZAV {
namespace Log {

namespace {

const char DYNAMIC_LEVEL_COMMAND[] = "DynamicLogLevelFilterSoft";

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
    std::string value;
    if (getSetting(properties, "asynchronous", value)) {
        synchronous_ = value != "true";
    }
    if (getSetting(properties, "filters", value)) {
        filters_.push_back(boost::make_shared<FilterLogger>(name_, properties));
    }
    if (getSetting(properties, "level", value)) {
        addLevelFilter(properties);
    }
    if (getSetting(properties, "message_type", value)) {
        filters_.push_back(boost::make_shared<FilterMessageType>(name_, properties));
    }
    return *this;
}

void AppenderBuilder::addLevelFilter(const Util::Properties& properties) {
    std::string value;
    if (getSetting(properties, "expiration", value)) {
        addDynamicLevelFilter(properties);
    } else {
        filters_.push_back(boost::make_shared<FilterLogLevel>(name_, properties));
    }
}

void AppenderBuilder::addDynamicLevelFilter(const Util::Properties& properties) {
    const boost::shared_ptr<FilterLogLevelDynamic> filter(new FilterLogLevelDynamic(name_, properties),
                                                          UnregisteringDeleter());
    filters_.push_back(filter);
    CommandBus::instance().registerListener(DYNAMIC_LEVEL_COMMAND, filter.get());
}

bool AppenderBuilder::getSetting(const Util::Properties& properties, const std::string& suffix,
                                 std::string& value) const {
    return properties.getProperty("appender." + name_ + "." + suffix, value);
}

} // namespace Log
} // namespace ZAV
