#pragma once

#include "Workload.h"

#include "log/LogManager.h"
#include "zav-util/Properties.h"

#include <filesystem>
#include <string>

namespace Bench {

using ZAV::Util::Properties;

/// Initialises the library and shuts it down.
class Library {
public:
    explicit Library(const Properties& properties) { ZAV::Log::LogManager::init(properties); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() { ZAV::Log::LogManager::finish(); }
};

/// An appender that writes to "<folder>/log0" and does not rotate.
inline Properties fileProperties(const Task& task) {
    Properties properties;
    properties["logger.root.level"] = "INFO";
    properties["appender.file"] = "FileAppender";
    properties["appender.file.dir"] = task.folder;
    properties["appender.file.file"] = "log";
    properties["appender.file.fileNumber"] = std::to_string(ROTATION_FILES - 1);
    properties["appender.file.fileMaxSize"] = "4";
    properties["appender.file.fileMaxSizeUnit"] = "GB";
    return properties;
}

inline Properties asynchronousProperties(const Task& task) {
    Properties properties = fileProperties(task);
    properties["appender.file.asynchronous"] = "true";
    properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "-1";
    properties["zav.log.AsynchronousDispatcher.waitingPeriod"] = "0";
    properties["zav.log.AsynchronousDispatcher.priority"] = "0";
    return properties;
}

inline Properties asJson(Properties properties) {
    properties["appender.file.layout"] = "json";
    return properties;
}

/// One write for all lines of a round, instead of one for each.
inline Properties batchProperties(const Task& task) {
    Properties properties = asynchronousProperties(task);
    properties["appender.file.flush"] = "batch";
    return properties;
}

inline Properties rotationProperties(const Task& task) {
    Properties properties = fileProperties(task);
    properties["appender.file.fileMaxSize"] = std::to_string(ROTATION_BYTES);
    properties["appender.file.fileMaxSizeUnit"] = "B";
    return properties;
}

inline std::string liveFile(const Task& task) {
    return task.file() + "0";
}

/// Keeps the queue in a file with room for all messages. A file left by a killed run is removed: its messages
/// would be delivered first.
inline Properties keptIn(const std::string& path, Properties properties) {
    std::filesystem::remove(path);
    properties["zav.log.AsynchronousDispatcher.queueFile"] = path;
    properties["zav.log.AsynchronousDispatcher.queueFileSize"] = "64 MB";
    return properties;
}

/// With the library's default waiting period.
inline Properties unhurriedProperties(const Task& task) {
    Properties properties = asynchronousProperties(task);
    properties.erase("zav.log.AsynchronousDispatcher.waitingPeriod");
    return properties;
}

} // namespace Bench
