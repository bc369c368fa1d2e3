#pragma once

/// \file
/// Tells configuration messages from ordinary ones:
///
///     #include "log/LogMessage.h"
///
///     bool isConfiguration(const ZAV::Log::LogMessage& message) {
///         return message.getType() == ZAV::Log::CFG;
///     }

#include "zav-util/Export.h"

#include <cstdint>
#include <string>

namespace ZAV {
namespace Log {

/// The kind of a message.
enum MessageType : std::int32_t {
    LOG = 0, ///< an ordinary message
    CFG = 1  ///< a configuration message, from `Logger::config`
};

/// \param name exactly "LOG" or "CFG"
/// \throw LogException if no message type has that name
ZAV_LOG_API MessageType messageTypeFromString(const std::string& name);

} // namespace Log
} // namespace ZAV
