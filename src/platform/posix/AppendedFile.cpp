#include "platform/AppendedFile.h"

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

namespace {

constexpr mode_t READABLE_AND_WRITABLE = 0666; // less what the process masks

} // namespace

AppendedFile::AppendedFile(const std::string& path)
    : descriptor_(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, READABLE_AND_WRITABLE)) {}

AppendedFile::~AppendedFile() {
    if (isOpen()) {
        ::close(descriptor_);
    }
}

void AppendedFile::write(const std::string& text) noexcept {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(descriptor_, text.data() + written, text.size() - written);
        if (count >= 0) {
            written += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            return;
        }
    }
}

} // namespace Platform
} // namespace ZAV
