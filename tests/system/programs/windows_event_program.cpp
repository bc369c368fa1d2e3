#include "log/LogException.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"
#include "log/SystemAppenders.h"
#include "zav-util/Properties.h"

#include <iostream>
#include <string>

namespace Log = ZAV::Log;

/// Reports one event of each level, and says how many failed.
int main() {
    Log::registerSystemAppenders();
    Log::LogManager::init({{"logger.root.level", "TRACE"},
                           {"appender.e", "EventLogAppender"},
                           {"appender.e.source", "caf\xc3\xa9"},
                           {"appender.e.layout", "fields"},
                           {"appender.e.fields", "level text"}});
    Log::Logger& net = Log::LoggerFactory::getLogger("net");
    for (const auto log : {&Log::Logger::audit, &Log::Logger::error, &Log::Logger::warning,
                           &Log::Logger::info, &Log::Logger::debug, &Log::Logger::trace}) {
        (net.*log)("of an event", 0, "");
    }
    const auto failed = Log::LogManager::statistics().failed;
    Log::LogManager::finish();
    std::cout << failed << std::endl;
}
