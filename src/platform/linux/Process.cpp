#include "platform/Process.h"

#include <climits>
#include <cstddef>
#include <unistd.h>

namespace ZAV {
namespace Platform {

namespace {

/// The system appends this to the path once the executable has been deleted or replaced, as by an update.
void removeDeletedMark(std::string& path) {
    const std::string mark = " (deleted)";
    if (path.size() > mark.size() && path.compare(path.size() - mark.size(), mark.size(), mark) == 0) {
        path.erase(path.size() - mark.size());
    }
}

} // namespace

std::string executablePath() {
    char buffer[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer);
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

} // namespace Platform
} // namespace ZAV
