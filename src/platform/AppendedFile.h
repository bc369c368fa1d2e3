#pragma once

#include <string>

namespace ZAV {
namespace Platform {

/// A text file that is open for writing at its end, without a buffer of its own. It closes with its scope.
class AppendedFile {
public:
    /// Opens the file, or makes it if it does not exist.
    explicit AppendedFile(const std::string& path);
    ~AppendedFile();
    AppendedFile(const AppendedFile&) = delete;
    AppendedFile& operator=(const AppendedFile&) = delete;

    bool isOpen() const noexcept { return descriptor_ >= 0; }

    /// Writes a text in one piece where the system takes it so; the file must be open. A line feed becomes
    /// the system's own end of line. What cannot be written is lost.
    void write(const std::string& text) noexcept;

private:
    int descriptor_; ///< negative if the file could not be opened
};

} // namespace Platform
} // namespace ZAV
