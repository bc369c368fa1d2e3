#pragma once

#include "log/appenders/AppenderBuilder.h"

#include <string>

namespace ZAV {
namespace Tools {

/// The filters that the library gives to an appender of a configuration, made by the library itself.
class AppenderFilters : private Log::AppenderBuilder {
public:
    /// \throw LogException for a setting that `init` would not take either
    AppenderFilters(const std::string& appenderName, const Util::Properties& properties);

    /// \return the first filter that rejects a message; nullptr if all accept it
    Log::MessageFilter* rejecting(const Log::LogMessage& message) const;

private:
    Log::Appender* build() override;
};

} // namespace Tools
} // namespace ZAV
