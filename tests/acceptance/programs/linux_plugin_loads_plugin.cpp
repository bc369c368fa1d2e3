// Logs from call sites of every kind, for a program that unloads it while the messages are queued.

#include "log/LogFormat.h"
#include "log/LogMacros.h"
#include "log/LoggerFactory.h"

#include <cstdio>
#include <string>

using namespace ZAV::Log;

namespace {

template <typename Value>
void logFromTemplate(Logger& logger, const Value& value) {
    ZAV_LOGF_ERROR(logger, "template {:>3}", value);
}

inline void logInline(Logger& logger, int number) {
    ZAV_LOG_ERROR(logger, "inline " << number << ' ' << 0.25 * number << " end");
}

} // namespace

extern "C" void logFromPlugin(int number) {
    Logger& logger = LoggerFactory::getLogger("plugin");
    char buffer[32]; // std::to_string would prevent the plugin from being unloaded
    std::snprintf(buffer, sizeof buffer, "text %d", number);
    const std::string text = buffer;
    ZAV_LOGF_ERROR(logger, "format {} {} {:.2f}", "literal", text, 0.5 * number);
    logFromTemplate(logger, number);
    logInline(logger, number);
    logger.error(text, __LINE__, __FILE__);
}
