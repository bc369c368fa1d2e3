// Logs by a property file that names the classes of the system's logs. It needs no daemon: nothing passes the
// appenders' levels.

#include "log/LogMacros.h"
#include "log/LogManager.h"
#include "log/LogSession.h"
#include "log/LoggerFactory.h"
#include "log/SystemAppenders.h"

#include <iostream>

int main(int, char** arguments) {
    ZAV::Log::registerSystemAppenders();
    const ZAV::Log::LogSession session(arguments[1]);
    ZAV_LOG_INFO(ZAV::Log::LoggerFactory::getLogger("net"), "not an audit");
    for (const ZAV::Log::AppenderStatus& appender : ZAV::Log::LogManager::appenders()) {
        std::cout << appender.name << " is a " << appender.className << '\n';
    }
    std::cout << (ZAV::Log::LogManager::appenders().size() == 2 ? "both classes are known"
                                                                : "a class is missing")
              << '\n';
}
