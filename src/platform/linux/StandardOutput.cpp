#include "platform/StandardOutput.h"

#include <cerrno>
#include <csignal>
#include <system_error>
#include <unistd.h>

namespace ZAV {
namespace Platform {

void prepareStandardOutput() {
    std::signal(SIGPIPE, SIG_IGN);
}

WriteResult writeStandardOutput(std::string_view text, std::string& problem) {
    while (!text.empty()) {
        const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EPIPE) {
            return WriteResult::NO_READER;
        } else if (errno != EINTR) {
            problem = std::generic_category().message(errno);
            return WriteResult::FAILED;
        }
    }
    return WriteResult::WRITTEN;
}

} // namespace Platform
} // namespace ZAV
