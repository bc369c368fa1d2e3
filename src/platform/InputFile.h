#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ZAV {
namespace Platform {

/// Tells a file from all others that exist at the same time, whatever their names are.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t index = 0;

    friend bool operator==(const FileIdentity& a, const FileIdentity& b) noexcept {
        return a.device == b.device && a.index == b.index;
    }
    friend bool operator!=(const FileIdentity& a, const FileIdentity& b) noexcept { return !(a == b); }
};

/// \param identity receives the identity of the file at a path; untouched on failure
/// \return false if there is none
bool identifyFile(const std::string& path, FileIdentity& identity);

/// A regular file that is open for reading while others write, rename and delete it, or standard input. It
/// closes with its scope.
class InputFile {
public:
    InputFile() noexcept = default;
    ~InputFile() { close(); }
    InputFile(InputFile&& other) noexcept;
    InputFile& operator=(InputFile&& other) noexcept;
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    enum class Links { FOLLOWED, REFUSED };

    /// Never waits: whatever is no regular file is refused.
    /// \param problem receives the system's word for what went wrong
    /// \param links what happens if the path itself is a symbolic link; those on the way to it are followed
    /// \return true if the file is open now
    bool open(const std::string& path, std::string& problem, Links links = Links::FOLLOWED);

    /// Opens what this process has for standard input, but for a directory.
    /// \param problem receives the system's word for what went wrong
    /// \return true if it is open now
    bool openStandardInput(std::string& problem);

    /// \return the same file, opened once more; without one if the system refuses
    InputFile duplicate() const;

    /// Reads from a place in the file; from a pipe, whatever comes next. After `catchStopSignals` it does not
    /// wait for a pipe: what is not there yet counts as the end.
    /// \return how many bytes were read, 0 at the end of the file, -1 on failure
    std::int64_t readAt(std::uint64_t offset, char* buffer, std::size_t size, std::string& problem) const;

    /// \return false for what can be read only once, like a pipe
    bool isSeekable() const;

    /// \return true if a pipe was read to its end: nobody can write to it any more
    bool hasEnded() const noexcept { return hasEnded_; }

    /// \return the place that standard input has been read up to by whoever had it before; 0 for a pipe
    std::uint64_t position() const;

    std::uint64_t size() const;
    FileIdentity identity() const;
    bool isOpen() const noexcept { return handle_ != NONE; }
    void close() noexcept;

private:
    static constexpr std::intptr_t NONE = -1;

    std::intptr_t handle_ = NONE;
    mutable bool hasEnded_ = false;
};

} // namespace Platform
} // namespace ZAV
