#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ZAV {
namespace Platform {

/// A file mapped into memory: what is written there reaches the file however the process ends, but may be
/// lost on a power failure. One process at a time owns the file; the system releases its lock when that
/// process dies, even if forked children, which must not use the memory, still live.
class MappedFile {
public:
    enum Result {
        MAPPED, ///< an existing file
        MADE,   ///< a new one, or one that replaces an empty one
        IN_USE, ///< another process owns it
        FAILED
    };

    MappedFile() noexcept = default;
    ~MappedFile() { close(); }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    /// Opens a regular file owned by this process's user, or creates one that only that user may access; none
    /// may be open. A new file is fully allocated as PATH.new and then renamed.
    /// \param size of a new file in bytes; 0 to create none, and to let root open one of another user. An existing file
    ///        keeps its size.
    /// \param beginning first bytes of a new file, written before it gets its name; zeros follow
    /// \param problem receives the reason if the result is `FAILED`
    Result open(const std::string& path, std::size_t size, std::string_view beginning, std::string& problem);

    /// Replaces the open file, whose content is no longer needed, with a new one.
    /// \param path the one given to `open`
    /// \param problem receives the reason on failure
    /// \return false on failure; the previous file stays open, but on Windows, where it is closed first, only if it can
    ///         be opened again
    bool replace(const std::string& path, std::size_t size, std::string_view beginning, std::string& problem);

    /// Copies the whole content of the file.
    /// \param problem receives the system's error text on failure
    /// \return false on failure
    /// \throw std::bad_alloc
    bool read(std::string& content, std::string& problem) const;

    /// Restricts access to the file to its owner; on Windows the folder's rights apply, and nothing is done.
    /// \param problem receives the system's error text on failure
    /// \return false on failure
    bool makePrivate(std::string& problem);

    /// Faults in the first pages now, where the system can, so that their first use does not block.
    /// \param most how many bytes at most
    void populate(std::size_t most) noexcept;

    /// Gives up the file lock that a forked child shares with its parent. The memory stays readable; writes
    /// to it no longer reach the file.
    void closeInChild() noexcept;

    /// \return whether a path names the open file
    bool isAt(const std::string& path) const noexcept;

    char* bytes() const noexcept { return bytes_; }
    std::size_t size() const noexcept { return size_; }

private:
    Result openExisting(const std::string& path, bool mayBeOfOthers, std::string& problem);
    enum Place { EMPTY_OR_MISSING, ITS_OWN };
    Result make(const std::string& path, std::size_t size, std::string_view beginning, Place place,
                std::string& problem);
    bool map(std::string& problem);
    void close() noexcept;
    bool isStillOpen() const noexcept;

    static constexpr std::intptr_t NONE = -1;

    std::intptr_t handle_ = NONE; ///< open as long as this process owns the file
    char* bytes_ = nullptr;
    std::size_t size_ = 0;

    // The file's identity, on Linux.
    std::uint64_t device_ = 0;
    std::uint64_t number_ = 0;
};

} // namespace Platform
} // namespace ZAV
