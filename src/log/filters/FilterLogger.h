#pragma once

#include "log/MessageFilter.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// Passes messages of the loggers whose names begin with one of a list of prefixes. The prefixes are plain
/// text: "net" passes "net.tcp" and also "network".
class FilterLogger : public MessageFilter {
public:
    /// Reads the key "appender.<appenderName>.filters": prefixes separated by spaces. Without a prefix every
    /// message is rejected.
    /// \throw LogException if the key is missing
    FilterLogger(const std::string& appenderName, const Util::Properties& properties);

    bool accept(const LogMessage& message) override;

private:
    std::vector<std::string> loggerNames_;
};

} // namespace Log
} // namespace ZAV
