#pragma once

/// \file
/// Logs what the application was configured with, whatever the level of the logger:
///
///     #include "log/Logger.h"
///
///     void logPort(ZAV::Log::Logger& logger, int port) {
///         logger.config(ZAV::Log::ConfigurationMessage("port = " + std::to_string(port)));
///     }

#include <string>
#include <utility>

namespace ZAV {
namespace Log {

/// A text about the application's configuration, which `Logger::config` logs.
class ConfigurationMessage {
public:
    explicit ConfigurationMessage(std::string text) : text_(std::move(text)) {}

    const std::string& getText() const noexcept { return text_; }

private:
    std::string text_;
};

} // namespace Log
} // namespace ZAV
