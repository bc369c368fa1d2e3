#pragma once

#include "log/LogMessage.h"

#include <string>

namespace Bench {

/// A message like those of the comparison with other loggers.
inline ZAV::Log::LogMessage makeMessage(const std::string& loggerName = "net.tcp") {
    using ZAV::Util::TimeUtils::Time;
    return ZAV::Log::LogMessage(loggerName, Time::now(), ZAV::Log::Level::LEVEL_INFO,
                                "connected to the backend server, request 12345", 120, "Socket.cpp",
                                ZAV::Log::LOG);
}

} // namespace Bench
