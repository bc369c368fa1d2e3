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

/// A file that is open for reading while others write, rename and delete it. It closes with its scope.
class InputFile {
public:
    InputFile() noexcept = default;
    ~InputFile() { close(); }
    InputFile(InputFile&& other) noexcept;
    InputFile& operator=(InputFile&& other) noexcept;
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// \param problem receives the system's word for what went wrong; a directory is refused too
    /// \return true if the file is open now
    bool open(const std::string& path, std::string& problem);

    /// \return the same file, opened once more; without one if the system refuses
    InputFile duplicate() const;

    /// Reads from a place in the file; from a pipe, whatever comes next.
    /// \return how many bytes were read, 0 at the end of the file, -1 on failure
    std::int64_t readAt(std::uint64_t offset, char* buffer, std::size_t size, std::string& problem) const;

    /// \return false for what can be read only once, like a pipe
    bool isSeekable() const;

    std::uint64_t size() const;
    FileIdentity identity() const;
    bool isOpen() const noexcept { return handle_ != NONE; }
    void close() noexcept;

private:
    static constexpr std::intptr_t NONE = -1;

    std::intptr_t handle_ = NONE;
};

} // namespace Platform
} // namespace ZAV
