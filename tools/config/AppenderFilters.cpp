#include "config/AppenderFilters.h"

#include "log/config/AppenderValues.h"
#include "log/config/ConfigurationKeys.h"
#include "log/filters/MessageFilters.h"

#include <algorithm>

namespace ZAV {
namespace Tools {

AppenderFilters::AppenderFilters(const std::string& appenderName, const Util::Properties& properties)
    : filters_(
          Log::makeFilters(Log::AppenderValues(appenderName, Log::READ_BY_REGISTERED_CLASS, properties))) {}

Log::MessageFilter* AppenderFilters::rejecting(const Log::LogMessage& message) const {
    const auto filter = std::find_if(filters_.begin(), filters_.end(),
                                     [&message](const auto& f) { return !f->accept(message); });
    return filter == filters_.end() ? nullptr : filter->get();
}

} // namespace Tools
} // namespace ZAV
