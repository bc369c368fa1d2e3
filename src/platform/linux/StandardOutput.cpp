#include "platform/StandardOutput.h"

#include "platform/StopSignal.h"
#include "platform/linux/StopDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace ZAV {
namespace Platform {

namespace {

/// Waits until a write of `PIPE_BUF` bytes would not block.
/// \return false if an end is requested before
bool waitUntilWritable() {
    pollfd watched[] = {{STDOUT_FILENO, POLLOUT, 0}, {stopDescriptor(), POLLIN, 0}};
    poll(watched, 2, -1);
    return watched[0].revents != 0;
}

/// \return how much of a text to write at once
std::size_t portion(std::string_view text) {
    const bool mustNotBlock = stopDescriptor() >= 0;
    return mustNotBlock ? std::min<std::size_t>(text.size(), PIPE_BUF) : text.size();
}

/// The next file that is opened must not become standard input or output where that is closed.
void occupyClosedStreams() {
    int opened = 0;
    do {
        opened = open("/dev/null", O_PATH | O_CLOEXEC); // to read or write it fails as before
    } while (opened >= 0 && opened <= STDERR_FILENO);
    close(opened);
}

} // namespace

void prepareStandardOutput() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN); // a file at the limit of its size is a failed write
    occupyClosedStreams();
}

WriteResult writeStandardOutput(std::string_view text, std::string& problem) {
    while (!text.empty()) {
        if (stopDescriptor() >= 0 && !waitUntilWritable()) {
            return WriteResult::STOPPED;
        }
        const ssize_t written = ::write(STDOUT_FILENO, text.data(), portion(text));
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EPIPE) {
            return WriteResult::NO_READER;
        } else if (errno == EAGAIN) {
            waitUntilWritable(); // a pipe that others have told not to block
        } else if (errno != EINTR) {
            problem = std::generic_category().message(errno);
            return WriteResult::FAILED;
        }
    }
    return WriteResult::WRITTEN;
}

} // namespace Platform
} // namespace ZAV
