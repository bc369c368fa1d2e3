#pragma once

#include "platform/FileRules.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ZAV {
namespace Platform {

/// A text file that is open for writing, without a buffer: what is written has left the process. Every write
/// goes to the end that the file has at that moment, so that several writers, and others that empty the file,
/// leave no holes. It closes with its scope. A failure is remembered until the next file opens, as a stream
/// of the standard library does. It has no lock.
class OutputFile {
public:
    enum Mode {
        TRUNCATE, ///< the content of a file that exists is lost
        APPEND,   ///< it is kept
        CREATE ///< none should be there; one that is there all the same is refused if links are not followed,
               ///< and otherwise kept, but a link is refused in any case
    };

    OutputFile() noexcept = default;
    ~OutputFile() { close(); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Opens a file, and makes it if it does not exist; none may be open. It fails if that is not possible,
    /// and never waits for another process. What stands in the file's place is looked at before it is
    /// changed: a regular file and a character device will do, and a pipe that has a reader if a symbolic
    /// link leads to it. All else is refused and left as it was.
    void open(const std::string& path, Mode mode, const FileRules& rules = FileRules()) noexcept;

    /// Writes a text, in one piece if the system accepts it so. A line feed becomes the system's own line
    /// end. It is a failure if the system does not accept the whole text. A pipe whose reader has left, and
    /// a limit of the process on the size of files, are a failure and no signal.
    /// \return how many bytes of the text the system accepted
    std::size_t write(std::string_view text) noexcept;

    /// The same, but every byte is written as it is.
    std::size_t writeBytes(std::string_view bytes) noexcept;

    /// Closes the file, if one is open. A failed write that the system reports only now counts as well.
    void close() noexcept;

    bool isOpen() const noexcept { return descriptor_ != NONE; }
    bool hasFailed() const noexcept { return failed_; }

    /// \return whether the path leads to the open file, not to another one or to none
    bool isAt(const std::string& path) const noexcept;

    /// \return the size of the open file in bytes; 0 if it has none
    std::uint64_t size() const noexcept;

    /// \return when the open file was written last, in microseconds since 1970-01-01 00:00:00 UTC; 0 if the
    ///         system does not say
    std::uint64_t lastWritten() const noexcept;

    /// \param path leads to the open file
    /// \return whether the open file has a last line without an end; false if it cannot be read
    bool endsInTornLine(const std::string& path, const FileRules& rules = FileRules()) const noexcept;

private:
    static constexpr int NONE = -1;

    int descriptor_ = NONE;
    bool failed_ = false;
    bool mayRaiseSignal_ =
        false; ///< whether its reader may leave, or its size was limited when it was opened
};

} // namespace Platform
} // namespace ZAV
