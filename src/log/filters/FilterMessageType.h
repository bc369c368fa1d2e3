#pragma once

#include "log/MessageFilter.h"
#include "log/MessageType.h"

#include <string>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// Passes messages of one type.
class FilterMessageType : public MessageFilter {
public:
    /// Reads the key "appender.<appenderName>.message_type".
    /// \throw LogException if the key is missing or its value is no message type
    FilterMessageType(const std::string& appenderName, const Util::Properties& properties);

    bool accept(const LogMessage& message) override;

private:
    MessageType messageType_;
};

} // namespace Log
} // namespace ZAV
