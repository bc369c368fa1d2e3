#include "platform/OpenFiles.h"

#include "platform/CriticalSection.h"
#include "platform/Process.h"
#include "platform/Threads.h"
#include "platform/linux/FileDescriptor.h"

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

namespace {

constexpr mode_t READABLE_AND_WRITABLE = 0666; // minus the umask

/// The kernel's own limit.
constexpr int MAX_LINKS = 40;

/// A path in a fixed-size buffer, since opening a file must not fail for lack of memory.
class LinkedPath {
public:
    explicit LinkedPath(const char* path) { replaceFrom(0, path, std::strlen(path)); }

    const char* text() const { return text_; }

    /// Follows one symbolic link; a path that is not a link is unchanged.
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
    /// A path that is too long becomes empty, which cannot be opened.
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

/// Creates a file; fails if the path exists, even as a dangling symbolic link.
int makeFile(const char* path, int flags, const FileRules& rules) {
    const int made =
        ::open(path, flags | O_CREAT | O_EXCL, rules.permissions.value_or(READABLE_AND_WRITABLE));
    if (made >= 0 && rules.permissions) {
        fchmod(made, *rules.permissions); // adds what the umask removed
    }
    return made;
}

/// Only a file created by this call gets the permissions. So it is created in a separate step, which fails if
/// another process is faster and does not follow a dangling link.
int openWithPermissions(const char* path, int flags, const FileRules& rules) {
    LinkedPath linked(path);
    for (int attempt = 0; attempt < MAX_LINKS; ++attempt) {
        const int existing = ::open(linked.text(), flags);
        if (existing >= 0 || errno != ENOENT) {
            return existing;
        }
        const int made = makeFile(linked.text(), flags, rules);
        if (made >= 0 || errno != EEXIST) {
            return made;
        }
        if (rules.followLinks) {
            linked.follow();
        }
    }
    return -1;
}

int openOrCreate(const char* path, int flags, const FileRules& rules) {
    return rules.permissions ? openWithPermissions(path, flags, rules)
                             : ::open(path, flags | O_CREAT, READABLE_AND_WRITABLE);
}

/// Opening a pipe without a reader would block, hence `O_NONBLOCK`. Nothing is truncated yet, since the
/// file's type is not known.
int openWithoutTypeCheck(const char* path, OutputFile::Mode mode, const FileRules& rules) {
    const int flags = O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK;
    if (mode != OutputFile::CREATE) {
        return openOrCreate(path, flags | (rules.followLinks ? 0 : O_NOFOLLOW), rules);
    }
    const int made = makeFile(path, flags, rules);
    const bool mayBeThere = made < 0 && errno == EEXIST && rules.followLinks;
    return mayBeThere ? openOrCreate(path, flags | O_NOFOLLOW, {rules.permissions, false}) : made;
}

/// Held while the numbers of closed standard streams are reserved.
struct NumbersLock : CriticalSection, NeverDestroyed<NumbersLock> {
    NumbersLock() : CriticalSection(AWAITED_BY_FORK) {}
};

const NumbersLock& madeAtLoad = NumbersLock::instance();

/// Another thread may write to a closed standard stream at any moment, so its number is reserved while it is
/// known to be closed. That may first be noticed by a file that was given the number.
int openBeyondStandardStreams(const char* path, OutputFile::Mode mode, const FileRules& rules) {
    if (!isStandardStreamClosed.load(std::memory_order_relaxed)) {
        return moveAboveStandardStreams(openWithoutTypeCheck(path, mode, rules));
    }
    const ScopedLock lock(NumbersLock::instance());
    const ReservedStandardDescriptors kept;
    isStandardStreamClosed.store(kept.areAny(), std::memory_order_relaxed);
    return moveAboveStandardStreams(openWithoutTypeCheck(path, mode, rules));
}

bool isLink(const char* path) {
    struct stat named;
    return lstat(path, &named) == 0 && S_ISLNK(named.st_mode);
}

/// Requests no timestamps: these make the call expensive, since the next write then has to store a finer one.
bool lookAt(int descriptor, struct statx& file) {
    return statx(descriptor, "", AT_EMPTY_PATH, STATX_TYPE | STATX_UID | STATX_SIZE, &file) == 0;
}

bool isAcceptable(const struct statx& file, const char* path, OutputFile::Mode mode, const FileRules& rules) {
    if (!rules.followLinks && file.stx_uid != 0 && geteuid() == 0) {
        return false;
    }
    const bool mayBeLinked = rules.followLinks && mode != OutputFile::CREATE;
    return S_ISREG(file.stx_mode) || S_ISCHR(file.stx_mode) ||
           (S_ISFIFO(file.stx_mode) && mayBeLinked && isLink(path));
}

/// Prepares a file opened by `openWithoutTypeCheck` for writing. `O_NONBLOCK` has no effect on regular files,
/// so it may stay.
bool makeReady(int descriptor, const struct statx& file, OutputFile::Mode mode) {
    if (!S_ISREG(file.stx_mode)) {
        return fcntl(descriptor, F_SETFL, O_APPEND) == 0;
    }
    return mode != OutputFile::TRUNCATE || file.stx_size == 0 || ftruncate(descriptor, 0) == 0;
}

bool isSameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// \return the last character of a file that is not empty; a line feed if it cannot be read
char readLastCharacter(const char* path, const struct stat& file, const FileRules& rules) {
    char last = '\n';
    const int descriptor =
        ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | (rules.followLinks ? 0 : O_NOFOLLOW));
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
    descriptor_ = openBeyondStandardStreams(path.c_str(), mode, rules);
    struct statx opened;
    if (isOpen() && (!lookAt(descriptor_, opened) || !isAcceptable(opened, path.c_str(), mode, rules) ||
                     !makeReady(descriptor_, opened, mode))) {
        ::close(descriptor_);
        descriptor_ = NONE;
    }
    mayRaiseSignal_ = isOpen() && (S_ISFIFO(opened.stx_mode) || isFileSizeLimited());
    failed_ = !isOpen();
}

std::size_t OutputFile::write(std::string_view text) noexcept {
    std::optional<WriteSignalGuard> guard;
    if (mayRaiseSignal_) {
        guard.emplace(descriptor_, true);
    }
    const std::size_t taken = writeAll(descriptor_, text.data(), text.size());
    failed_ = taken != text.size() || failed_;
    return taken;
}

std::size_t OutputFile::writeBytes(std::string_view bytes) noexcept {
    return write(bytes);
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

std::uint64_t OutputFile::lastWritten() const noexcept {
    struct stat opened;
    if (fstat(descriptor_, &opened) != 0 || opened.st_mtim.tv_sec < 0) {
        return 0;
    }
    return static_cast<std::uint64_t>(opened.st_mtim.tv_sec) * 1'000'000 +
           static_cast<std::uint64_t>(opened.st_mtim.tv_nsec) / 1000;
}

bool OutputFile::endsInPartialLine(const std::string& path, const FileRules& rules) const noexcept {
    const NoCancellation guard;
    struct stat opened;
    const bool hasLines = fstat(descriptor_, &opened) == 0 && S_ISREG(opened.st_mode) && opened.st_size > 0;
    return hasLines && readLastCharacter(path.c_str(), opened, rules) != '\n';
}

} // namespace Platform
} // namespace ZAV
