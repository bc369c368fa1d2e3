#include "explain/ExplainedAppender.h"

#include "log/config/ConfigurationKeys.h"
#include "log/filters/MessageFilters.h"

namespace ZAV {
namespace Tools {

ExplainedAppender::ExplainedAppender(const std::string& name, const Util::Properties& properties)
    : name_(name), properties_(properties), filters_(name, properties), place_(name, properties) {}

std::string ExplainedAppender::refusal(const Log::LogMessage& message) const {
    Log::MessageFilter* const filter = filters_.rejecting(message);
    if (filter == nullptr) {
        return std::string();
    }
    if (dynamic_cast<Log::FilterLogger*>(filter) != nullptr) {
        return "its filters are " + setting(Log::AppenderSetting::FILTERS);
    }
    if (dynamic_cast<Log::FilterMessageType*>(filter) != nullptr) {
        return "its message_type is " + setting(Log::AppenderSetting::MESSAGE_TYPE);
    }
    return "its level is " + setting(Log::AppenderSetting::LEVEL);
}

std::string ExplainedAppender::layout() const {
    const auto entry = properties_.find(Log::appenderKey(name_, Log::AppenderSetting::LAYOUT));
    return entry == properties_.end() ? std::string() : entry->second;
}

std::string ExplainedAppender::setting(const std::string& setting) const {
    return properties_.at(Log::appenderKey(name_, setting));
}

} // namespace Tools
} // namespace ZAV
