#pragma once

#include "check/Findings.h"
#include "config/Configuration.h"

#include <filesystem>
#include <map>
#include <string>

namespace ZAV {
namespace Tools {

// Each check looks for mistakes about one thing and is in a source file of its name. The two findings that
// need no configuration, "unreadable" and "grammar", are in `Checker`.

/// Appenders without a known class, those that are declared twice, and loggers whose names the library
/// rejects: "unknown-class", "duplicate-appender" and "bad-name".
void checkNames(const Configuration& configuration, Findings& findings);

/// Keys that nothing reads, or that have no effect: "unknown-key", "undeclared-appender", "ignored-key" and
/// "lonely-pair".
void checkKeys(const Configuration& configuration, Findings& findings);

/// Values that the library rejects: "bad-level", "bad-message-type", "bad-expiration", "bad-layout",
/// "bad-number" and "bad-value".
void checkRejectedValues(const Configuration& configuration, Findings& findings);

/// Words of values that the library accepts, but reads as something else: "unknown-unit" and "unknown-value".
void checkMisreadWords(const Configuration& configuration, Findings& findings);

/// Numbers that the library reads as other numbers: "partly-read" and "out-of-range".
void checkMisreadNumbers(const Configuration& configuration, Findings& findings);

/// The queue files named by the property files checked so far, each with the first of these that names it.
using QueueFilesOfOthers = std::map<std::string, std::string>;

/// A queue without room ("no-queue"), batches of an appender that has no queue ("ignored-key"), a queue file
/// without a folder, without room, or shared with another program ("queue-file"), and its size
/// ("out-of-range").
/// \param fileName of the property file
void checkQueue(const Configuration& configuration, const std::string& fileName, QueueFilesOfOthers& others,
                Findings& findings);

/// File appenders that cannot write into their folders, or that write to the same files: "missing-directory",
/// "unwritable-directory" and "shared-file".
void checkFiles(const Configuration& configuration, Findings& findings);

/// Levels of appenders that no message reaches, and prefixes that match loggers which merely begin with the
/// same letters: "unreachable-level" and "prefix-surprise".
void checkFilters(const Configuration& configuration, Findings& findings);

/// \return the path by which a file is recognised under another name, for `checkQueue` and `checkFiles`; components
///         that do not exist yet are kept as they are
std::string canonicalPath(const std::filesystem::path& path);

} // namespace Tools
} // namespace ZAV
