#include "platform/ReplacedFile.h"

#include "platform/linux/FileDescriptor.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace ZAV {
namespace Platform {

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

/// The content must be on the disk before its name is: some file systems keep them in no order, and show an
/// empty file after a crash.
bool writeToDisk(const std::string& path, const std::string& content) {
    const FileDescriptor file(
        open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0666));
    return file.isOpen() && writeAll(file.number(), content) && fsync(file.number()) == 0;
}

bool fail(const std::string& replacement, std::string& problem) {
    problem = std::generic_category().message(errno);
    unlink(replacement.c_str()); // on a full disk a part of it takes the room that the next try needs
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

} // namespace Platform
} // namespace ZAV
