#include "platform/Terminal.h"

#include "platform/linux/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <ext/stdio_filebuf.h>
#include <ext/stdio_sync_filebuf.h>
#include <fcntl.h>
#include <ostream>
#include <poll.h>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

namespace ZAV {
namespace Platform {

namespace {

int stopDescriptor = -1; ///< readable once a stop was requested; -1 before `catchStopSignals`

sigset_t stopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

bool isBroken(const pollfd& output) {
    return (output.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0;
}

} // namespace

bool catchesStopSignals() {
    return stopDescriptor >= 0;
}

/// The signals stay blocked and pending: a handler could not interrupt a `write` that has not yet blocked.
void catchStopSignals() {
    const sigset_t signals = stopSignals();
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    stopDescriptor = signalfd(-1, &signals, SFD_CLOEXEC);
}

bool isStopRequested() {
    sigset_t pending;
    return catchesStopSignals() && sigpending(&pending) == 0 &&
           (sigismember(&pending, SIGINT) == 1 || sigismember(&pending, SIGTERM) == 1);
}

bool waitForStop(std::chrono::milliseconds time) {
    pollfd watched[] = {{stopDescriptor, POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
    poll(watched, 2, static_cast<int>(time.count()));
    return isStopRequested() || isBroken(watched[1]);
}

namespace {

constexpr int UNKNOWN = -1;

/// A stream may be redirected to a file. Read only once, since it would cost a system call per line.
const bool wasLimitedAtLoad = isFileSizeLimited();

/// A standard stream's default buffer, which uses C's stream.
using SharedBuffer = __gnu_cxx::stdio_sync_filebuf<char>;
/// Its buffer after `sync_with_stdio(false)`.
using OwnBuffer = __gnu_cxx::stdio_filebuf<char>;

/// Where a buffer writes to, as far as that is known.
struct Target {
    std::FILE* file = nullptr; ///< C's stream, if the buffer uses it
    int descriptor = UNKNOWN;
};

Target targetOf(std::streambuf* buffer) {
    if (auto* const shared = dynamic_cast<SharedBuffer*>(buffer)) {
        return {shared->file(), fileno(shared->file())};
    }
    auto* const own = dynamic_cast<OwnBuffer*>(buffer);
    return {nullptr, own != nullptr && own->is_open() ? own->fd() : UNKNOWN};
}

/// A failure must not leave the application's stream in a failed state.
bool writeByStream(std::ostream& stream, std::string_view text) {
    const std::ios_base::iostate before = stream.rdstate();
    stream.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
    const bool isWritten = stream.good();
    if (stream.rdstate() != before) {
        stream.clear(before);
    }
    return isWritten;
}

/// Locks C's stream, if there is one.
class HeldFile {
public:
    explicit HeldFile(std::FILE* file) : file_(file) {
        if (file_ != nullptr) {
            flockfile(file_);
        }
    }
    ~HeldFile() {
        if (file_ != nullptr) {
            funlockfile(file_);
        }
    }
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

private:
    std::FILE* const file_;
};

/// Bypasses the buffer, after flushing what the application has left in it.
bool writePast(std::streambuf& buffer, const Target& target, std::string_view text) {
    const HeldFile held(target.file);
    buffer.pubsync();
    return writeAll(target.descriptor, text.data(), text.size()) == text.size();
}

} // namespace

bool writeToStream(std::ostream& stream, std::string_view text) {
    const Target target = targetOf(stream.rdbuf());
    const bool flushesAnother = stream.tie() != nullptr;
    const WriteSignalGuard guard(flushesAnother ? UNKNOWN : target.descriptor, wasLimitedAtLoad);
    if (target.descriptor == UNKNOWN) {
        return writeByStream(stream, text);
    }
    if (flushesAnother) { // before C's stream is locked
        stream.tie()->flush();
    }
    return writePast(*stream.rdbuf(), target, text);
}

namespace {

/// Waits until a write of `PIPE_BUF` bytes would not block.
/// \return false if a stop is requested first
bool waitUntilWritable() {
    pollfd watched[] = {{STDOUT_FILENO, POLLOUT, 0}, {stopDescriptor, POLLIN, 0}};
    poll(watched, 2, -1);
    return watched[0].revents != 0;
}

/// \return how much of a text to write at once
std::size_t portion(std::string_view text) {
    const bool mustNotBlock = catchesStopSignals();
    return mustNotBlock ? std::min<std::size_t>(text.size(), PIPE_BUF) : text.size();
}

/// Occupies the numbers of closed standard streams, so that no file opened later becomes one.
void occupyClosedStreams() {
    int opened = 0;
    do {
        opened = open("/dev/null", O_PATH | O_CLOEXEC); // reading or writing it fails as before
    } while (opened >= 0 && opened <= STDERR_FILENO);
    close(opened);
}

} // namespace

void prepareStandardOutput() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN); // reaching the file size limit is then a failed write
    occupyClosedStreams();
}

WriteResult writeStandardOutput(std::string_view text, std::string& problem) {
    while (!text.empty()) {
        if (catchesStopSignals() && !waitUntilWritable()) {
            return WriteResult::STOPPED;
        }
        const ssize_t written = ::write(STDOUT_FILENO, text.data(), portion(text));
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EPIPE) {
            return WriteResult::NO_READER;
        } else if (errno == EAGAIN) {
            waitUntilWritable(); // another process has made the pipe non-blocking
        } else if (errno != EINTR) {
            problem = std::generic_category().message(errno);
            return WriteResult::FAILED;
        }
    }
    return WriteResult::WRITTEN;
}

bool isTerminal(StandardStream stream) {
    return isatty(stream == STANDARD_OUTPUT ? STDOUT_FILENO : STDERR_FILENO) == 1;
}

bool showsColors() {
    return isTerminal(STANDARD_OUTPUT);
}

} // namespace Platform
} // namespace ZAV
