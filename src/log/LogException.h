#pragma once

/// \file
/// What the library throws, for example for an invalid configuration:
///
///     #include "log/LogManager.h"
///     #include "zav-util/Properties.h"
///     #include <iostream>
///
///     bool startLogging(const ZAV::Util::Properties& properties) {
///         try {
///             return ZAV::Log::LogManager::init(properties);
///         } catch (const ZAV::Log::LogException& exception) {
///             std::cerr << exception.what() << '\n';
///             return false;
///         }
///     }

#include "zav-util/Export.h"

#include <stdexcept>
#include <string>

namespace ZAV {
namespace Log {

/// An error of the logging library: an invalid configuration, or a destination that cannot be written to. An
/// application's own appender throws it from `doOutput` to have its text reported.
class ZAV_LOG_API LogException : public std::runtime_error {
public:
    /// \param message the text that `what()` returns
    explicit LogException(const std::string& message);
    ~LogException() override;
};

} // namespace Log
} // namespace ZAV
