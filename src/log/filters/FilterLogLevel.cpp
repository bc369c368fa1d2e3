#include "log/filters/FilterLogLevel.h"

#include "log/LogMessage.h"
#include "log/config/AppenderSettings.h"
#include "log/config/KeyNames.h"

namespace ZAV {
namespace Log {

FilterLogLevel::FilterLogLevel(const std::string& appenderName, const Util::Properties& properties)
    : level_(Level::fromString(AppenderSettings(appenderName, properties).require(AppenderSetting::LEVEL))) {}

bool FilterLogLevel::passes(const LogMessage& message) {
    return level_ <= message.getLevel();
}

LevelFilter::State FilterLogLevel::ownStateAt(Time) const {
    return {level_, Time()};
}

} // namespace Log
} // namespace ZAV
