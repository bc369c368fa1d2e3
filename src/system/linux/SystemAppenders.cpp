#include "log/SystemAppenders.h"

#include "log/LogManager.h"
#include "system/linux/LinuxAppenders.h"

namespace ZAV {
namespace Log {

void registerSystemAppenders() {
    LogManager::registerAppenderClass("SyslogAppender", [](const AppenderOptions& options) {
        return std::make_unique<SyslogAppender>(options);
    });
    LogManager::registerAppenderClass("JournaldAppender", [](const AppenderOptions& options) {
        return std::make_unique<JournaldAppender>(options);
    });
}

} // namespace Log
} // namespace ZAV
