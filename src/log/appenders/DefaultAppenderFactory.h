#pragma once

#include "log/appenders/AbstractAppenderFactory.h"

namespace ZAV {
namespace Log {

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
