#pragma once

#include "log/Appender.h"
#include "zav-util/Properties.h"

#include <string>

namespace ZAV {
namespace Tools {

/// The filters of a configured appender, created by the library itself.
class AppenderFilters {
public:
    /// \throw LogException for a setting that `init` would reject too
    AppenderFilters(const std::string& appenderName, const Util::Properties& properties);

    /// \return the first filter that rejects a message; nullptr if all accept it
    Log::MessageFilter* rejecting(const Log::LogMessage& message) const;

private:
    Log::Appender::Filters filters_;
};

} // namespace Tools
} // namespace ZAV
