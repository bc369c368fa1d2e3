#pragma once

#include <string>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

class Appender;

/// Makes the appenders of one class name of the configuration.
class AbstractAppenderFactory {
public:
    /// \return a new appender, which the caller owns
    /// \throw LogException for a bad setting
    virtual Appender* create(const Util::Properties& properties, const std::string& appenderName) = 0;

    virtual ~AbstractAppenderFactory() = default;
};

/// Makes appenders with a builder of a type derived from `AppenderBuilder`.
template <typename Builder>
class DefaultAppenderFactory : public AbstractAppenderFactory {
public:
    Appender* create(const Util::Properties& properties, const std::string& appenderName) override {
        Builder builder(appenderName);
        return builder.configure(properties).build();
    }
};

} // namespace Log
} // namespace ZAV
