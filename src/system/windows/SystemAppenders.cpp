#include "log/SystemAppenders.h"

#include "log/LogManager.h"
#include "system/windows/EventLogAppender.h"

namespace ZAV {
namespace Log {

void registerSystemAppenders() {
    LogManager::registerAppenderClass("EventLogAppender", [](const AppenderOptions& options) {
        return std::make_unique<EventLogAppender>(options);
    });
}

} // namespace Log
} // namespace ZAV
