#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

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

/// How a file that is opened for writing is found and made. Without effect on Windows.
struct FileRules {
    /// The permissions of a file that is made, whatever the process masks; without them every permission to
    /// read and write that the process does not mask. A file that exists keeps its own.
    std::optional<unsigned> permissions;

    /// Whether a symbolic link in the place of the file leads to it, or is an error. Where it is an error,
    /// a process that runs as root refuses a file of another user as well.
    bool followLinks = true;
};

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
