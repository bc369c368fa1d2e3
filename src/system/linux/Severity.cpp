#include "system/linux/Severity.h"

#include <syslog.h>

namespace ZAV {
namespace Log {

int severityOf(Level::LogLevel level) {
    switch (level) {
    case Level::LEVEL_AUDIT:
        return LOG_NOTICE;
    case Level::LEVEL_ERROR:
        return LOG_ERR;
    case Level::LEVEL_WARNING:
        return LOG_WARNING;
    case Level::LEVEL_INFO:
        return LOG_INFO;
    default:
        return LOG_DEBUG;
    }
}

} // namespace Log
} // namespace ZAV
