#pragma once

#include <string>

namespace ZAV {
namespace Platform {

/// A text file for writing, without a buffer: once `write` returns, the text has left the process. The
/// destructor closes the file. A failure is remembered until the next file is opened, as in the streams of
/// the standard library. It has no lock: one thread at a time may use it.
class OutputFile {
public:
    enum Mode {
        TRUNCATE, ///< the content of a file that exists is lost
        APPEND    ///< every write goes to the end that the file has at that moment
    };

    OutputFile() noexcept = default;
    ~OutputFile() { close(); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Opens a file and creates it if it does not exist; no other file may be open. What goes wrong shows in
    /// `hasFailed`, here and below.
    void open(const std::string& path, Mode mode) noexcept;

    /// Writes a text, in one piece if the system accepts it so. A line feed becomes the system's own line
    /// end. It is a failure if the system does not accept the whole text.
    void write(const std::string& text) noexcept;

    /// Closes the file, if one is open. A failed write that the system reports only now counts as well.
    void close() noexcept;

    bool isOpen() const noexcept { return descriptor_ != NONE; }
    bool hasFailed() const noexcept { return failed_; }

private:
    static constexpr int NONE = -1;

    int descriptor_ = NONE;
    bool failed_ = false;
};

} // namespace Platform
} // namespace ZAV
