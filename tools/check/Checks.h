#pragma once

#include "check/Findings.h"
#include "config/Configuration.h"

#include <map>
#include <string>

namespace ZAV {
namespace Tools {

// Each check looks for one kind of mistake; its source file is named after the function.

/// Appenders without a class, those that are declared twice, and loggers whose names the library rejects.
void checkNames(const Configuration& configuration, Findings& findings);

/// Keys that nothing reads, or that have no effect.
void checkKeys(const Configuration& configuration, Findings& findings);

/// Values that the library rejects.
void checkRejectedValues(const Configuration& configuration, Findings& findings);

/// Words of values that the library accepts, but reads as something else: "unknown-unit" and "unknown-value".
void checkMisreadWords(const Configuration& configuration, Findings& findings);

/// Numbers that the library reads as other numbers: "partly-read" and "out-of-range".
void checkMisreadNumbers(const Configuration& configuration, Findings& findings);

/// The queue files named by the property files checked so far, each with the first of these that names it.
using QueueFilesOfOthers = std::map<std::string, std::string>;

/// A queue without room, batches of an appender that has no queue, and a queue file without a folder, without
/// room, or shared with another program.
/// \param fileName of the property file
void checkQueue(const Configuration& configuration, const std::string& fileName, QueueFilesOfOthers& others,
                Findings& findings);

/// File appenders that cannot write into their folders, or that write to the same files.
void checkFiles(const Configuration& configuration, Findings& findings);

/// Levels of appenders that no message reaches, and prefixes that match loggers which merely begin with the
/// same letters.
void checkFilters(const Configuration& configuration, Findings& findings);

} // namespace Tools
} // namespace ZAV
