#include "platform/OutputFile.h"

#include "platform/CancellationGuard.h"

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

namespace {

constexpr mode_t READABLE_AND_WRITABLE = 0666; // minus the umask

/// As many as the system itself follows.
constexpr int MOST_LINKS = 40;

/// A path in memory of fixed size, since opening a file must not fail for want of memory.
class LinkedPath {
public:
    explicit LinkedPath(const char* path) { replaceFrom(0, path, std::strlen(path)); }

    const char* text() const { return text_; }

    /// Goes one symbolic link further; a path that is none stays as it is.
    void follow() {
        char target[PATH_MAX];
        const ssize_t length = readlink(text_, target, sizeof target);
        if (length > 0) {
            const char* const slash = std::strrchr(text_, '/');
            const bool isRelative = target[0] != '/' && slash != nullptr;
            replaceFrom(isRelative ? static_cast<std::size_t>(slash + 1 - text_) : 0, target,
                        static_cast<std::size_t>(length));
        }
    }

private:
    /// A path that is too long becomes an empty one, which leads nowhere.
    void replaceFrom(std::size_t begin, const char* end, std::size_t length) {
        if (begin + length >= sizeof text_) {
            text_[0] = '\0';
            return;
        }
        std::memcpy(text_ + begin, end, length);
        text_[begin + length] = '\0';
    }

    char text_[PATH_MAX];
};

/// Only a file that this call makes gets the permissions, so it is made in a step of its own, which fails if
/// another makes it first, and follows no link to a file that is missing.
int openWithPermissions(const char* path, int flags, const FileRules& rules) {
    LinkedPath linked(path);
    for (int attempt = 0; attempt < MOST_LINKS; ++attempt) {
        const int existing = ::open(linked.text(), flags);
        if (existing >= 0 || errno != ENOENT) {
            return existing;
        }
        const int made = ::open(linked.text(), flags | O_CREAT | O_EXCL, *rules.permissions);
        if (made >= 0) {
            fchmod(made, *rules.permissions); // adds what the process masks
            return made;
        }
        if (errno != EEXIST) {
            return made;
        }
        linked.follow();
    }
    return -1;
}

/// The C library's function would also end a thread that is being cancelled. To keep it from that costs a
/// fiftieth of the call.
ssize_t writeUncancelled(int descriptor, const char* text, std::size_t size) {
    return ::syscall(SYS_write, descriptor, text, size);
}

/// \return false if the system did not take the whole text
bool writeAll(int descriptor, const char* text, std::size_t size) {
    while (size > 0) {
        const ssize_t written = writeUncancelled(descriptor, text, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        text += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

bool isSameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// \return the last character of a file that is not empty; a line feed if it cannot be read
char readLastCharacter(const char* path, const struct stat& file) {
    char last = '\n';
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor >= 0) {
        struct stat found;
        if (fstat(descriptor, &found) == 0 && isSameFile(found, file)) {
            static_cast<void>(!pread(descriptor, &last, 1, found.st_size - 1));
        }
        ::close(descriptor);
    }
    return last;
}

} // namespace

void OutputFile::open(const std::string& path, Mode mode, const FileRules& rules) noexcept {
    const NoCancellation guard;
    const int flags = O_WRONLY | O_APPEND | O_CLOEXEC | (mode == TRUNCATE ? O_TRUNC : 0) |
                      (rules.followLinks ? 0 : O_NOFOLLOW);
    descriptor_ = rules.permissions ? openWithPermissions(path.c_str(), flags, rules)
                                    : ::open(path.c_str(), flags | O_CREAT, READABLE_AND_WRITABLE);
    failed_ = !isOpen();
}

void OutputFile::write(const std::string& text) noexcept {
    failed_ = !writeAll(descriptor_, text.data(), text.size()) || failed_;
}

void OutputFile::close() noexcept {
    if (isOpen()) {
        const NoCancellation guard;
        failed_ = ::close(descriptor_) != 0 || failed_;
        descriptor_ = NONE;
    }
}

bool OutputFile::isAt(const std::string& path) const noexcept {
    struct stat named;
    struct stat opened;
    return stat(path.c_str(), &named) == 0 && fstat(descriptor_, &opened) == 0 && isSameFile(named, opened);
}

std::uint64_t OutputFile::size() const noexcept {
    struct stat opened;
    return fstat(descriptor_, &opened) == 0 ? static_cast<std::uint64_t>(opened.st_size) : 0;
}

bool OutputFile::endsInTornLine(const std::string& path) const noexcept {
    const NoCancellation guard;
    struct stat opened;
    const bool hasLines = fstat(descriptor_, &opened) == 0 && S_ISREG(opened.st_mode) && opened.st_size > 0;
    return hasLines && readLastCharacter(path.c_str(), opened) != '\n';
}

} // namespace Platform
} // namespace ZAV
