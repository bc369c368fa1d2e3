#pragma once

#include "log/LogManager.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"

#include <string>

// Shared by the programs that end.

namespace ZAV::TestSupport {

/// Initialises the library with a synchronous appender, and with asynchronous ones that write nothing before
/// the process ends, unless the waiting period is shorter. One of these fails; it takes only messages of the
/// logger "broken".
inline bool initForEnd(const std::string& directory, const std::string& waitingPeriod = "3600") {
    Util::Properties properties;
    properties["appender.sync"] = "FileAppender";
    properties["appender.sync.dir"] = directory;
    properties["appender.broken"] = "SimpleFileAppender";
    properties["appender.broken.asynchronous"] = "true";
    properties["appender.broken.filters"] = "broken";
    properties["appender.broken.dir"] = directory + "/missing";
    properties["appender.queued"] = "SimpleFileAppender";
    properties["appender.queued.asynchronous"] = "true";
    properties["appender.queued.dir"] = directory;
    properties["appender.queued.level"] = "TRACE";
    properties["appender.together"] = "FileAppender";
    properties["appender.together.asynchronous"] = "true";
    properties["appender.together.flush"] = "batch";
    properties["appender.together.dir"] = directory;
    properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "-1";
    properties["zav.log.AsynchronousDispatcher.waitingPeriod"] = waitingPeriod;
    return Log::LogManager::init(properties);
}

inline void logNumbers(int first, int last) {
    for (int number = first; number <= last; ++number) {
        Log::LoggerFactory::getLogger("net").error(std::to_string(number), 0, "");
    }
}

} // namespace ZAV::TestSupport
