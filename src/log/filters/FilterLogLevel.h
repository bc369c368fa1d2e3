#pragma once

#include "log/filters/LevelFilter.h"

#include <string>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// Passes messages at or above a level.
class FilterLogLevel : public LevelFilter {
public:
    /// Reads the key "appender.<appenderName>.level".
    /// \throw LogException if the key is missing or its value is no level name
    FilterLogLevel(const std::string& appenderName, const Util::Properties& properties);

private:
    bool passes(const LogMessage& message) override;
    State ownStateAt(Time time) const override;

    Level::LogLevel level_;
};

} // namespace Log
} // namespace ZAV
