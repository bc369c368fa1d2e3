#include "platform/Process.h"

#include "platform/CancellationGuard.h"
#include "platform/linux/FileDescriptor.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

namespace {

constexpr char EXECUTABLE_LINK[] = "/proc/self/exe";

bool isPathOfExecutable(const std::string& path) {
    struct stat named;
    struct stat running;
    return stat(path.c_str(), &named) == 0 && stat(EXECUTABLE_LINK, &running) == 0 &&
           named.st_dev == running.st_dev && named.st_ino == running.st_ino;
}

/// The system adds this to the path once the executable was replaced or deleted, as an update in place does.
/// A program may also be called so.
void removeDeletedMark(std::string& path) {
    const std::string mark = " (deleted)";
    if (path.size() > mark.size() && path.compare(path.size() - mark.size(), mark.size(), mark) == 0 &&
        !isPathOfExecutable(path)) {
        path.erase(path.size() - mark.size());
    }
}

/// A process that has ended keeps its id until its parent asks for its result, which may be never. The system
/// has for each process a descriptor that says so, if it is not too old for it.
bool hasEnded(int id) {
#ifdef SYS_pidfd_open
    const NoCancellation guard;
    const FileDescriptor process(static_cast<int>(syscall(SYS_pidfd_open, id, 0)));
    pollfd watched = {process.number(), POLLIN, 0};
    return process.isOpen() && poll(&watched, 1, 0) == 1 && (watched.revents & POLLIN) != 0;
#else
    return false;
#endif
}

} // namespace

std::string executablePath() {
    char buffer[PATH_MAX];
    const ssize_t length = readlink(EXECUTABLE_LINK, buffer, sizeof buffer);
    if (length < 0) {
        return std::string();
    }
    std::string path(buffer, static_cast<std::size_t>(length));
    removeDeletedMark(path);
    return path;
}

int processId() {
    return getpid();
}

std::uint64_t processIdSpace() {
    struct stat space;
    return stat("/proc/self/ns/pid", &space) == 0 ? space.st_ino : 0;
}

bool isProcessAlive(int id) {
    return (kill(id, 0) == 0 || errno == EPERM) && !hasEnded(id);
}

} // namespace Platform
} // namespace ZAV
