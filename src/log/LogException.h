#pragma once

#include "zav-util/Export.h"

#include <stdexcept>
#include <string>

namespace ZAV {
namespace Log {

/// A failure of the logging library: a bad configuration, or a destination that cannot be written. An
/// application's own appender throws it from `doOutput` to have its text reported.
class ZAV_LOG_API LogException : public std::runtime_error {
public:
    /// \param message the text that `what()` gives
    explicit LogException(const std::string& message);
    ~LogException() override;
};

} // namespace Log
} // namespace ZAV
