#include "log/AppenderOptions.h"

#include "log/config/AppenderValues.h"
#include "log/config/ConfigurationKeys.h"
#include "log/config/KeyNames.h"
#include "log/filters/MessageFilters.h"
#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"
#include "zav-util/Properties.h"

#include <boost/make_shared.hpp>
#include <memory>

namespace ZAV {
namespace Log {

struct AppenderOptions::Inside {
    Inside(const std::string& appenderName, const Util::Properties& properties)
        : values(appenderName, READ_BY_REGISTERED_CLASS, properties),
          layout(values.layoutOr(LayoutName::PLAIN)) {
        const std::string beginning = appenderKey(appenderName, std::string());
        for (auto entry = properties.lower_bound(beginning);
             entry != properties.end() && entry->first.compare(0, beginning.size(), beginning) == 0;
             ++entry) {
            settings[entry->first.substr(beginning.size())] = entry->second;
        }
    }

    const AppenderValues values;
    const std::shared_ptr<const LineLayout> layout;
    Util::Properties settings; ///< the appender's own keys, without their beginning
};

AppenderOptions::AppenderOptions(const std::string& appenderName, const Util::Properties& properties)
    : name(appenderName), inside_(boost::make_shared<Inside>(appenderName, properties)) {
    synchronous = !inside_->values.asynchronous;
    filters = makeFilters(inside_->values);
}

AppenderOptions::~AppenderOptions() = default;
AppenderOptions::AppenderOptions(const AppenderOptions& other) = default;
AppenderOptions& AppenderOptions::operator=(const AppenderOptions& other) = default;

std::string AppenderOptions::formatLine(const LogMessage& message) const {
    std::string line;
    appendWholeLine(line, message, *inside_->layout);
    line.pop_back();
    return line;
}

std::string AppenderOptions::value(const std::string& key, const std::string& byDefault) const {
    std::string found = byDefault;
    inside_->settings.getProperty(key, found);
    return found;
}

} // namespace Log
} // namespace ZAV
