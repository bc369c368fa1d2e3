#include "zav-util/UtilException.h"

#include "zav-util/Conversions.h"

namespace ZAV {
namespace Util {

UtilException::UtilException(const std::string& message) : std::runtime_error(message) {}

UtilException::UtilException(const std::string& message, const std::string& file, int line)
    : std::runtime_error(message + " from " + file + ":" + toString(std::int64_t{line})) {}

UtilException::~UtilException() = default;

} // namespace Util
} // namespace ZAV
