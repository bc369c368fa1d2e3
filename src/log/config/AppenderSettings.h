#pragma once

#include "zav-util/TimeUtils.h"

#include <string>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// The keys "appender.<name>.*" of one appender in a configuration.
class AppenderSettings {
public:
    /// \param properties must outlive this object
    AppenderSettings(const std::string& appenderName, const Util::Properties& properties);

    /// \return whether the setting is present
    bool has(const std::string& setting) const;

    /// \param value receives the setting's value; untouched if it is absent
    /// \return whether the setting is present
    bool get(const std::string& setting, std::string& value) const;

    /// \return what the setting says; `byDefault` if it is absent or neither "true" nor "false"
    bool getBoolean(const std::string& setting, bool byDefault) const;

    /// \return the duration that the setting names, as `readPeriod` gives it; 0 if it is absent
    /// \throw LogException if its count is no whole number
    Util::TimeUtils::Time getPeriod(const std::string& setting) const;

    /// \return the value of a setting that must be present
    /// \throw LogException if it is absent
    std::string require(const std::string& setting) const;

private:
    std::string appenderName_;
    const Util::Properties& properties_;
};

} // namespace Log
} // namespace ZAV
