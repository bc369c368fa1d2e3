#include "platform/Files.h"

#include "platform/Threads.h"
#include "platform/linux/FileDescriptor.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ZAV {
namespace Platform {

namespace {

/// For file systems without RENAME_NOREPLACE: `link` adds the new name only if it is free, then the old name
/// is removed.
bool renameByLink(const char* from, const char* to) {
    return link(from, to) == 0 && unlink(from) == 0;
}

/// For file systems without hard links. A file that appears between the two calls is overwritten.
bool renameIfAbsent(const char* from, const char* to) {
    return access(to, F_OK) != 0 && errno == ENOENT && std::rename(from, to) == 0;
}

} // namespace

/// May block on a pipe, so cancellation stays enabled.
bool readFile(const std::string& path, std::string& text) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    char part[16 * 1024];
    for (ssize_t count = 1; file.isOpen() && count > 0;) {
        do {
            count = read(file.number(), part, sizeof part);
        } while (count < 0 && errno == EINTR);
        if (count < 0) {
            return false;
        }
        text.append(part, static_cast<std::size_t>(count));
    }
    return file.isOpen();
}

bool renameFile(const std::string& from, const std::string& to) {
    const NoCancellation guard;
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    if (renameByLink(from.c_str(), to.c_str())) {
        return true;
    }
    const bool hasNoLinks = errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS;
    return hasNoLinks && renameIfAbsent(from.c_str(), to.c_str());
}

bool renameOver(const std::string& from, const std::string& to) {
    const NoCancellation guard;
    return std::rename(from.c_str(), to.c_str()) == 0;
}

std::string absolutePath(const std::string& folder) {
    if (folder.empty() || folder.front() == '/') {
        return folder;
    }
    std::error_code problem;
    const std::filesystem::path here = std::filesystem::current_path(problem);
    const bool isReachable = !problem && std::filesystem::equivalent(here, ".", problem);
    return isReachable ? (here / folder).native() : folder;
}

std::optional<FileStatus> statFile(const std::string& path) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return FileStatus{static_cast<std::uint64_t>(status.st_size), status.st_mode & 0777U};
}

bool isTaken(const std::string& path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
}

bool removeFile(const std::string& path) {
    const NoCancellation guard;
    return unlink(path.c_str()) == 0;
}

namespace {

bool writeAll(int descriptor, const std::string& content) {
    for (std::size_t written = 0; written < content.size();) {
        const ssize_t count = write(descriptor, content.data() + written, content.size() - written);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        written += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    return true;
}

/// The content must be on disk before the rename: some file systems do not order the two, and leave an empty
/// file after a crash.
bool writeToDisk(const std::string& path, const std::string& content) {
    const FileDescriptor file(
        open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0666));
    return file.isOpen() && writeAll(file.number(), content) && fsync(file.number()) == 0;
}

bool fail(const std::string& replacement, std::string& problem) {
    problem = std::generic_category().message(errno);
    unlink(replacement.c_str()); // on a full disk a partial file takes the space that the next attempt needs
    return false;
}

} // namespace

bool writeReplacement(const std::string& path, const std::string& content, std::string& problem) {
    const std::string replacement = path + ".new";
    return writeToDisk(replacement, content) || fail(replacement, problem);
}

bool replaceFile(const std::string& path, std::string& problem) {
    const std::string replacement = path + ".new";
    return std::rename(replacement.c_str(), path.c_str()) == 0 || fail(replacement, problem);
}

FileLock::FileLock(FileLock&& other) noexcept : handle_(std::exchange(other.handle_, NONE)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

FileLock::~FileLock() {
    if (handle_ != NONE) {
        close(static_cast<int>(handle_));
    }
}

/// Opened read-only, so that a file created by another user works as well.
FileLock::Result FileLock::acquire(const std::string& path, std::string& problem) {
    if (handle_ != NONE) {
        return HELD;
    }
    const int opened = moveAboveStandardStreams(
        open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0644));
    if (opened >= 0 && flock(opened, LOCK_EX | LOCK_NB) == 0) {
        handle_ = opened;
        return HELD;
    }
    const int error = errno;
    if (opened >= 0) {
        close(opened);
    }
    problem = std::generic_category().message(error);
    return opened >= 0 && error == EWOULDBLOCK ? HELD_BY_ANOTHER : CANNOT_BE_DECIDED;
}

namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};

/// Follows symbolic links; an entry that has vanished meanwhile counts as a file.
bool isDirectory(DIR* directory, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK) {
        return entry.d_type == DT_DIR;
    }
    struct stat status;
    return fstatat(dirfd(directory), entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

bool listFiles(const std::string& directory, std::vector<std::string>& names) {
    const NoCancellation guard;
    const std::unique_ptr<DIR, DirectoryCloser> stream(opendir((directory + "/").c_str()));
    if (!stream) {
        return false;
    }
    while (const dirent* entry = readdir(stream.get())) {
        if (!isDirectory(stream.get(), *entry)) {
            names.push_back(entry->d_name);
        }
    }
    return true;
}

bool isWritableDirectory(const std::string& directory) {
    return faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool isReadableDirectory(const std::string& directory, std::string& problem) {
    const FileDescriptor opened(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen() && faccessat(AT_FDCWD, directory.c_str(), X_OK, AT_EACCESS) == 0) {
        return true;
    }
    problem = std::generic_category().message(errno);
    return false;
}

} // namespace Platform
} // namespace ZAV
