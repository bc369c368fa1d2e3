#include "platform/OutputFile.h"

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

namespace {

constexpr mode_t READABLE_AND_WRITABLE = 0666; // minus the umask

/// \return false if the system did not take the whole text
bool writeAll(int descriptor, const char* text, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(descriptor, text, size);
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

} // namespace

void OutputFile::open(const std::string& path, Mode mode) noexcept {
    const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (mode == TRUNCATE ? O_TRUNC : O_APPEND);
    descriptor_ = ::open(path.c_str(), flags, READABLE_AND_WRITABLE);
    failed_ = !isOpen();
}

void OutputFile::write(const std::string& text) noexcept {
    failed_ = !writeAll(descriptor_, text.data(), text.size()) || failed_;
}

void OutputFile::close() noexcept {
    if (isOpen()) {
        failed_ = ::close(descriptor_) != 0 || failed_;
        descriptor_ = NONE;
    }
}

} // namespace Platform
} // namespace ZAV
