#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ZAV {
namespace Platform {

/// Identifies a file among all that exist at the same time, independently of its name.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t index = 0;

    friend bool operator==(const FileIdentity& a, const FileIdentity& b) noexcept {
        return a.device == b.device && a.index == b.index;
    }
    friend bool operator!=(const FileIdentity& a, const FileIdentity& b) noexcept { return !(a == b); }
};

/// \param identity receives the identity of the file at a path; untouched on failure
/// \return false if no file exists there
bool identifyFile(const std::string& path, FileIdentity& identity);

/// A regular file, or standard input, open for reading; others may write, rename and delete the file
/// meanwhile. Closed by the destructor.
class InputFile {
public:
    InputFile() noexcept = default;
    ~InputFile() { close(); }
    InputFile(InputFile&& other) noexcept;
    InputFile& operator=(InputFile&& other) noexcept;
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    enum class Links { FOLLOWED, REFUSED };

    /// Never blocks: anything but a regular file is refused.
    /// \param problem receives the system's error text
    /// \param links what to do if the path itself is a symbolic link; links in its parent directories are always
    ///        followed
    /// \return true if the file is open now
    bool open(const std::string& path, std::string& problem, Links links = Links::FOLLOWED);

    /// Opens this process's standard input, whatever it is except a directory.
    /// \param problem receives the system's error text
    /// \return true if it is open now
    bool openStandardInput(std::string& problem);

    /// \return a second handle to the same open file; a closed object if the system refuses
    InputFile duplicate() const;

    /// Reads at an offset; from a pipe, the next bytes. After `catchStopSignals` it does not block on a pipe:
    /// an empty pipe reads as the end of the file.
    /// \return how many bytes were read, 0 at the end of the file, -1 on failure
    std::int64_t readAt(std::uint64_t offset, char* buffer, std::size_t size, std::string& problem) const;

    /// \return false for a stream that can be read only once, such as a pipe
    bool isSeekable() const;

    /// \return true if a pipe was read to its end: nobody can write to it any more
    bool hasEnded() const noexcept { return hasEnded_; }

    /// \return the offset at which a previous reader left standard input; 0 for a pipe
    std::uint64_t position() const noexcept { return position_; }

    std::uint64_t size() const;
    FileIdentity identity() const;
    bool isOpen() const noexcept { return handle_ != NONE; }
    void close() noexcept;

private:
    static constexpr std::intptr_t NONE = -1;

    std::intptr_t handle_ = NONE;
    std::uint64_t position_ = 0; ///< as it was when the file was opened: on Windows reading changes it
    mutable bool hasEnded_ = false;
};

/// A regular file read from beginning to end as raw bytes; others may write, rename and delete it meanwhile.
/// Closed by the destructor. Not thread-safe.
class SequentialFile {
public:
    SequentialFile() noexcept = default;
    ~SequentialFile() { close(); }
    SequentialFile(const SequentialFile&) = delete;
    SequentialFile& operator=(const SequentialFile&) = delete;

    /// Opens a file; none may be open. Never blocks: anything but a regular file is refused, and so is a
    /// symbolic link.
    /// \param problem receives the system's error text
    /// \return true if the file is open now
    bool open(const std::string& path, std::string& problem);

    /// Takes an exclusive lock on the open file, which excludes other processes and objects until it is
    /// closed.
    /// \return false if the lock is held elsewhere; true also if the file system has no locks
    bool reserve() noexcept;

    /// \return how many bytes were read, 0 at the current end of the file, -1 on failure
    std::int64_t read(char* buffer, std::size_t size, std::string& problem);

    void close() noexcept;

private:
    static constexpr std::intptr_t NONE = -1;

    std::intptr_t handle_ = NONE;
};

/// How a file is opened for writing or created. Ignored on Windows.
struct FileRules {
    /// Permissions of a created file, regardless of the umask; without them, read and write permission for
    /// all minus the umask. An existing file keeps its own.
    std::optional<unsigned> permissions;

    /// Whether a symbolic link at the path is followed or is an error. If it is an error, a process that runs
    /// as root also refuses a file owned by another user.
    bool followLinks = true;
};

/// A text file open for unbuffered writing. Every write appends at the current end of the file, so concurrent
/// writers and truncation leave no holes. Closed by the destructor. A failure is sticky until the next
/// `open`, as with standard streams. Not thread-safe.
class OutputFile {
public:
    enum Mode {
        TRUNCATE, ///< an existing file is emptied
        APPEND,   ///< the content of an existing file is kept
        CREATE ///< no file is expected; an existing one is refused if links are not followed and appended to
               ///< otherwise; a link is always refused
    };

    OutputFile() noexcept = default;
    ~OutputFile() { close(); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Opens a file, creating it if it does not exist; none may be open. Failure shows in `hasFailed`; never
    /// waits for another process. The type is checked before anything is changed: accepted are a regular
    /// file, a character device, and a pipe with a reader if reached by a symbolic link. Anything else is
    /// refused and left unchanged.
    void open(const std::string& path, Mode mode, const FileRules& rules = FileRules()) noexcept;

    /// Writes a text, in a single call if the system accepts it whole. Line feeds become the system's line
    /// ends. Fails if the system does not accept the whole text. A closed pipe and the process's file size
    /// limit cause a failure, not a signal.
    /// \return how many bytes of the text the system accepted
    std::size_t write(std::string_view text) noexcept;

    /// The same without converting line ends.
    std::size_t writeBytes(std::string_view bytes) noexcept;

    /// Closes the file, if one is open. A write error that the system reports only on closing counts as a
    /// failure.
    void close() noexcept;

    bool isOpen() const noexcept { return descriptor_ != NONE; }
    bool hasFailed() const noexcept { return failed_; }

    /// \return whether the path names the open file
    bool isAt(const std::string& path) const noexcept;

    /// \return the size of the open file in bytes; 0 if it has none
    std::uint64_t size() const noexcept;

    /// \return modification time of the open file, in microseconds since 1970-01-01 00:00:00 UTC; 0 if the system does
    ///         not say
    std::uint64_t lastWritten() const noexcept;

    /// \param path of the open file
    /// \return whether the open file's last line lacks its line end; false if it cannot be read
    bool endsInPartialLine(const std::string& path, const FileRules& rules = FileRules()) const noexcept;

private:
    static constexpr int NONE = -1;

    int descriptor_ = NONE;
    bool failed_ = false;
    bool mayRaiseSignal_ = false; ///< whether it is a pipe, or file sizes were limited when it was opened
};

} // namespace Platform
} // namespace ZAV
