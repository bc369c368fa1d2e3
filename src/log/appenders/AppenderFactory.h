#pragma once

#include "log/AppenderOptions.h"
#include "log/LogException.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace ZAV {
namespace Log {

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

/// Makes appenders of a class that the application has registered.
class RegisteredClassFactory : public AbstractAppenderFactory {
public:
    using Maker = std::function<std::unique_ptr<Appender>(const AppenderOptions&)>;

    RegisteredClassFactory(const std::string& className, Maker maker)
        : className_(className), maker_(std::move(maker)) {}

    /// \throw what the maker throws as well
    Appender* create(const Util::Properties& properties, const std::string& appenderName) override {
        std::unique_ptr<Appender> made = maker_(AppenderOptions(appenderName, properties));
        if (made == nullptr) {
            throw LogException("Appender class " + className_ + " made no appender.");
        }
        return made.release();
    }

private:
    const std::string className_;
    const Maker maker_;
};

} // namespace Log
} // namespace ZAV
