#include "platform/Files.h"

#include "platform/Threads.h"
#include "platform/linux/FileDescriptor.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

namespace {

/// For file systems that have no rename that refuses to overwrite: `link` gives the file a second name only
/// if that name is free, and the first name is then removed.
bool renameByLink(const char* from, const char* to) {
    return link(from, to) == 0 && unlink(from) == 0;
}

/// For file systems without hard links. A file that appears between the two calls is overwritten.
bool renameIfAbsent(const char* from, const char* to) {
    return access(to, F_OK) != 0 && errno == ENOENT && std::rename(from, to) == 0;
}

} // namespace

/// Opening and reading may wait for the other side of a pipe, in which the thread may be cancelled.
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

std::optional<FileStatus> lookAtFile(const std::string& path) {
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

} // namespace Platform
} // namespace ZAV
