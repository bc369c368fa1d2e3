#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ZAV {
namespace Platform {

/// A file whose content is memory of this process: what is written there stays in the file however the
/// process ends, but not if the machine loses its power. One process at a time has it; the system takes the
/// right back when that process is dead, also while children live that were forked from it, which must not
/// use the memory.
class MappedFile {
public:
    enum Result {
        MAPPED, ///< a file that was there
        MADE,   ///< a new one, or one in the place of an empty one
        IN_USE, ///< another process has it
        FAILED
    };

    MappedFile() noexcept = default;
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    /// Opens a regular file of this process's user, or makes one, for that user alone; none may be open. A
    /// new one is allocated whole under the path with ".new" behind it and then renamed.
    /// \param size of a new file in bytes; 0 to make none, and to let root open one of another user. One that is
    ///        there keeps its own.
    /// \param beginning what a new file begins with, before it has its name; zeros follow
    /// \param problem receives the system's word if the result is `FAILED`
    Result open(const std::string& path, std::size_t size, std::string_view beginning, std::string& problem);

    /// Puts a new file in the place of the one that is open, whose content nobody needs any more.
    /// \param path the same as that of `open`
    /// \param problem receives the system's word if that fails
    /// \return false then; the file of before stays open
    bool replace(const std::string& path, std::size_t size, std::string_view beginning, std::string& problem);

    /// Takes a copy of all that the file holds.
    /// \param problem receives the system's word if that fails
    /// \return false then
    /// \throw std::bad_alloc
    bool read(std::string& content, std::string& problem) const;

    /// Takes the file from all but its user.
    /// \param problem receives the system's word if that fails
    /// \return false then
    bool makePrivate(std::string& problem);

    /// Maps the file's first bytes now, where the system can, so that nobody waits at their first use.
    void populate(std::size_t most) noexcept;

    /// Gives the right to the file up that a forked child shares with its parent. The memory can still be
    /// read; what is written to it does not get into the file.
    void closeInChild() noexcept;

    /// \return whether a path leads to the open file
    bool isAt(const std::string& path) const noexcept;

    char* bytes() const noexcept { return bytes_; }
    std::size_t size() const noexcept { return size_; }

private:
    Result openExisting(const std::string& path, bool mayBeOfOthers, std::string& problem);
    enum Place { EMPTY_OR_MISSING, ITS_OWN };
    Result make(const std::string& path, std::size_t size, std::string_view beginning, Place place,
                std::string& problem);
    bool map(std::string& problem);
    bool isStillOpen() const noexcept;

    static constexpr std::intptr_t NONE = -1;

    std::intptr_t handle_ = NONE; ///< open for as long as the file is this process's
    char* bytes_ = nullptr;
    std::size_t size_ = 0;

    // Which file it is, on Linux.
    std::uint64_t device_ = 0;
    std::uint64_t number_ = 0;
};

} // namespace Platform
} // namespace ZAV
