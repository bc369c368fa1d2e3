#include "options/LevelName.h"

#include "UsageError.h"
#include "log/LogException.h"

namespace ZAV {
namespace Tools {

Log::Level::LogLevel readLevel(const std::string& name) {
    try {
        return Log::Level::fromString(name);
    } catch (const Log::LogException& exception) {
        throw UsageError(exception.what());
    }
}

} // namespace Tools
} // namespace ZAV
