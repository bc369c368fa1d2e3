#include "log/LogException.h"

namespace ZAV {
namespace Log {

LogException::LogException(const std::string& message) : std::runtime_error(message) {}

LogException::~LogException() = default;

} // namespace Log
} // namespace ZAV
