#pragma once

#include "log/Level.h"
#include "log/MessageFilter.h"

#include <string>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// Passes messages at or above a level.
class FilterLogLevel : public MessageFilter {
public:
    /// Reads the key "appender.<appenderName>.level".
    /// \throw LogException if the key is missing or its value is no level name
    FilterLogLevel(const std::string& appenderName, const Util::Properties& properties);

    bool accept(const LogMessage& message) override;

private:
    Level::LogLevel level_;
};

} // namespace Log
} // namespace ZAV
