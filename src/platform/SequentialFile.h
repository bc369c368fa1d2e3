#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ZAV {
namespace Platform {

/// A regular file that is open for reading from its beginning on, as it is on the disk, while others may
/// write, rename and delete it. It closes with its scope. It has no lock.
class SequentialFile {
public:
    SequentialFile() noexcept = default;
    ~SequentialFile() { close(); }
    SequentialFile(const SequentialFile&) = delete;
    SequentialFile& operator=(const SequentialFile&) = delete;

    /// Opens a file; none may be open. Never waits: whatever is no regular file is refused, and so is a
    /// symbolic link in its place.
    /// \param problem receives the system's word for what went wrong
    /// \return true if the file is open now
    bool open(const std::string& path, std::string& problem);

    /// Takes the right to the open file that one of all processes and objects may have, until it is closed.
    /// \return false if another one has it; also true where the file system knows no such right
    bool reserve() noexcept;

    /// \return how many of the next bytes were read, 0 at the end that the file has now, -1 on failure
    std::int64_t read(char* buffer, std::size_t size, std::string& problem);

    void close() noexcept;

private:
    static constexpr std::intptr_t NONE = -1;

    std::intptr_t handle_ = NONE;
};

} // namespace Platform
} // namespace ZAV
