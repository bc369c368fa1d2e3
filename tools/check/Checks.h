#pragma once

#include "check/Configuration.h"
#include "check/Findings.h"

#include <map>
#include <string>

namespace ZAV {
namespace Tools {

// Each check looks for one kind of mistake; its source file is named after the function.

/// Appenders without a class, and those that are declared twice.
void checkDeclarations(const Configuration& configuration, Findings& findings);

/// Keys that nothing reads, or that have no effect.
void checkKeys(const Configuration& configuration, Findings& findings);

/// Loggers whose names the library rejects.
void checkNames(const Configuration& configuration, Findings& findings);

/// Values that the library rejects.
void checkRejectedValues(const Configuration& configuration, Findings& findings);

/// Values that the library accepts, but reads as something else.
void checkMisreadValues(const Configuration& configuration, Findings& findings);

/// A queue without room, and batches of an appender that has no queue.
void checkQueue(const Configuration& configuration, Findings& findings);

/// The queue files named by the property files checked so far, each with the first of these that names it.
using QueueFilesOfOthers = std::map<std::string, std::string>;

/// A queue file without a folder, without room, or shared with another program.
/// \param fileName of the property file
void checkQueueFile(const Configuration& configuration, const std::string& fileName,
                    QueueFilesOfOthers& others, Findings& findings);

/// Folders into which a file appender cannot write.
void checkFolders(const Configuration& configuration, Findings& findings);

/// File appenders that write to the same files.
void checkSharedFiles(const Configuration& configuration, Findings& findings);

/// Levels of appenders that no message reaches.
void checkLevels(const Configuration& configuration, Findings& findings);

/// Prefixes that match loggers which merely begin with the same letters.
void checkPrefixes(const Configuration& configuration, Findings& findings);

} // namespace Tools
} // namespace ZAV
