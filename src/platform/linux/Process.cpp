#include "platform/Process.h"

#include "platform/Threads.h"
#include "platform/linux/FileDescriptor.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <string_view>
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

/// The kernel appends this to the path once the executable has been replaced or deleted, for example by an
/// update. But a program may also have such a name.
void removeDeletedMark(std::string& path) {
    const std::string mark = " (deleted)";
    if (path.size() > mark.size() && path.compare(path.size() - mark.size(), mark.size(), mark) == 0 &&
        !isPathOfExecutable(path)) {
        path.erase(path.size() - mark.size());
    }
}

/// A zombie keeps its id until its parent reaps it, which may be never. On kernels that have pidfds, these
/// tell it from a running process.
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

namespace {

/// A thread's name with its NUL. After "zav-log " there is just room for the largest thread id.
using ThreadName = char[16];
constexpr long NUMBERS = 10'000'000;

/// A process hardly has more service threads, and checking many threads takes long.
constexpr int MAX_SERVING = 8;

void writeServingName(ThreadName& name, long thread) {
    std::snprintf(name, sizeof name, "zav-log %u", static_cast<unsigned>(thread % NUMBERS));
}

/// \return the content of a file in /proc, read into the given buffer; empty if it cannot be read
std::string_view readShown(const char* path, char* buffer, std::size_t size) {
    const int file = ::open(path, O_RDONLY | O_CLOEXEC);
    const ssize_t length = file < 0 ? -1 : ::read(file, buffer, size - 1);
    if (file >= 0) {
        ::close(file);
    }
    buffer[length < 0 ? 0 : length] = '\0';
    return buffer;
}

struct Threads {
    int left = 0; ///< how many have not ended; 0 if unknown
    bool firstHasEnded = false;
};

/// /proc/self/stat begins "pid (name) state", and the name may contain anything. The state is the first
/// thread's, which still counts as a thread after it has ended.
Threads lookAtThreads() {
    char buffer[1024];
    const std::string_view line = readShown("/proc/self/stat", buffer, sizeof buffer);
    const std::size_t nameEnd = line.rfind(')');
    char firstState = '\0';
    int threads = 0;
    const bool isRead = nameEnd != std::string_view::npos &&
                        std::sscanf(buffer + nameEnd,
                                    ") %c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %*u %*u %*d %*d %*d %*d %d",
                                    &firstState, &threads) == 2;
    const bool firstHasEnded = firstState == 'Z';
    return isRead ? Threads{threads - (firstHasEnded ? 1 : 0), firstHasEnded} : Threads();
}

bool isServing(const char* thread) {
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/task/%.20s/comm", thread);
    ThreadName expected;
    writeServingName(expected, std::strtol(thread, nullptr, 10));
    char buffer[sizeof(ThreadName) + 1]; // with a line feed
    const std::string_view shown = readShown(path, buffer, sizeof buffer);
    return !shown.empty() && shown.substr(0, shown.size() - 1) == expected;
}

/// Each thread is checked by itself, since others start and end meanwhile: one that has just started or ended
/// does not count as a service thread.
/// \param firstHasEnded whether the process's first thread, which is still listed, has ended
/// \return whether all other threads are marked as serving
bool doAllOthersServe(bool firstHasEnded) {
    DIR* const threads = opendir("/proc/self/task");
    if (threads == nullptr) {
        return false;
    }
    const long self = gettid();
    bool doServe = true;
    for (const dirent* thread = readdir(threads); doServe && thread != nullptr; thread = readdir(threads)) {
        const long id = std::strtol(thread->d_name, nullptr, 10); // 0 for "." and ".."
        const bool isOther = id != 0 && id != self && !(firstHasEnded && id == getpid());
        doServe = !isOther || isServing(thread->d_name);
    }
    closedir(threads);
    return doServe;
}

} // namespace

void atProcessEnd(void (*handler)()) {
    std::atexit(handler);
}

bool isOnlyThread() noexcept {
    const NoCancellation guard;
    const Threads threads = lookAtThreads();
    return threads.left == 1 ||
           (threads.left > 1 && threads.left <= MAX_SERVING + 1 && doAllOthersServe(threads.firstHasEnded));
}

void markAsServing() noexcept {
    ThreadName name;
    writeServingName(name, gettid());
    pthread_setname_np(pthread_self(), name);
}

void keepLibraryLoaded() {
    // The library is linked with "-z nodelete", so it is never unloaded.
}

bool readHostName(std::string& name) {
    char buffer[256] = {};
    if (gethostname(buffer, sizeof buffer - 1) != 0) {
        return false;
    }
    name = buffer;
    return true;
}

} // namespace Platform
} // namespace ZAV
