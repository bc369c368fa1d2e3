#include "config/AppenderFilters.h"

#include "log/LogException.h"

#include <algorithm>

namespace ZAV {
namespace Tools {

AppenderFilters::AppenderFilters(const std::string& appenderName, const Util::Properties& properties)
    : AppenderBuilder(appenderName) {
    AppenderBuilder::configure(properties);
}

Log::MessageFilter* AppenderFilters::rejecting(const Log::LogMessage& message) const {
    const auto filter = std::find_if(filters_.begin(), filters_.end(),
                                     [&message](const auto& f) { return !f->accept(message); });
    return filter == filters_.end() ? nullptr : filter->get();
}

/// The filters are all that is wanted.
Log::Appender* AppenderFilters::build() {
    throw Log::LogException("The appender '" + name_ + "' is described, not made.");
}

} // namespace Tools
} // namespace ZAV
