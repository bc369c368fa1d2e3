#include "log/tree/LoggerName.h"

#include "log/LogException.h"

#include <algorithm>
#include <string>

namespace ZAV {
namespace Log {

void requireAcceptableName(std::string_view path) {
    constexpr std::ptrdiff_t MOST_COMPONENTS = 1000;
    const std::ptrdiff_t components = std::count(path.begin(), path.end(), '.') + 1;
    if (components > MOST_COMPONENTS) {
        throw LogException("Logger name has too many components: " + std::to_string(components));
    }
}

} // namespace Log
} // namespace ZAV
