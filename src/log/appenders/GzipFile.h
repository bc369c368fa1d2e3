#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

namespace ZAV {
namespace Log {

/// How the packing of a file has ended.
struct Packing {
    enum Result {
        DONE,
        INTERRUPTED, ///< nothing of it is left
        FAILED
    };
    Result result;
    std::string problem; ///< what went wrong, if it has failed
};

/// Packs a rolled file, so that at every moment, also after a kill, the plain file is there or the packed one
/// as a whole. A file that grows meanwhile is packed anew; one that is deleted meanwhile stays deleted. What
/// another process packs is left to that, which has the right to the plain file as long.
///
/// Called by one thread of the process at a time.
/// \param path the plain file, which is deleted in the end
/// \param isInterrupted looked at after every few milliseconds of work
Packing packFile(const std::string& path, const std::atomic<bool>& isInterrupted);

/// Deletes what is left of a packing, unless one is under way.
/// \param path the plain file, which may be gone
void removeAbandonedPart(const std::string& path);

/// The last step of packing: puts a whole packed file into the place of the plain one.
/// A packed file that is there already is an older form of it, which nobody reads while the plain one is
/// there.
/// \param size of the plain one when it was packed
/// \return nothing if it has grown since, and must be packed anew
std::optional<Packing> replaceByPacked(const std::string& path, std::uint64_t size);

/// In a forked child, which does not run that thread: closes the files that it has open.
void closePackedFilesInChild() noexcept;

} // namespace Log
} // namespace ZAV
