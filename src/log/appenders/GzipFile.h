#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

namespace ZAV {
namespace Log {

/// Result of packing a file.
struct PackingResult {
    enum Result {
        DONE,
        INTERRUPTED, ///< no part of it is left on disk
        FAILED
    };
    Result result;
    std::string problem; ///< the error text if it has failed
};

/// Packs a rolled file, so that at any moment, even after a kill, the plain file or the complete packed one
/// exists. A file that grows meanwhile is packed again; one that is deleted meanwhile stays deleted. A file
/// that another process is packing, and has locked, is left to that.
///
/// Called by one thread of the process at a time.
/// \param path the plain file, which is deleted at the end
/// \param isInterrupted polled every few milliseconds
PackingResult packFile(const std::string& path, const std::atomic<bool>& isInterrupted);

/// Deletes the partial output of an aborted packing, unless one is in progress.
/// \param path the plain file, which may be gone
void removeAbandonedPart(const std::string& path);

/// The last step of packing: replaces the plain file by a complete packed one. An existing packed file is an
/// older version, which is not read while the plain file exists.
/// \param size size of the plain file when it was packed
/// \return nothing if it has grown since, and must be packed again
std::optional<PackingResult> replaceByPacked(const std::string& path, std::uint64_t size);

/// For a forked child, which does not have the packing thread: closes that thread's open files.
void closePackedFilesInChild() noexcept;

} // namespace Log
} // namespace ZAV
