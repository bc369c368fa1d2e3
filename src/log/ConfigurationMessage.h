#pragma once

#include <string>
#include <utility>

namespace ZAV {
namespace Log {

/// What `Logger::config` logs: a text about the application's configuration.
class ConfigurationMessage {
public:
    explicit ConfigurationMessage(std::string text) : text_(std::move(text)) {}

    const std::string& getText() const noexcept { return text_; }

private:
    std::string text_;
};

} // namespace Log
} // namespace ZAV
