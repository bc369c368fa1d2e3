#pragma once

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

    /// \return the value of a setting that must be present
    /// \throw LogException if it is absent
    std::string require(const std::string& setting) const;

private:
    std::string appenderName_;
    const Util::Properties& properties_;
};

} // namespace Log
} // namespace ZAV
