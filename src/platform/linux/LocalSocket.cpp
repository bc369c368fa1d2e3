#include "platform/LocalSocket.h"

#include "platform/linux/LocalSocket.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <thread>

namespace ZAV {
namespace Platform {

SocketAddress::SocketAddress(const std::string& path) {
    const std::size_t longest = sizeof address_.sun_path - 1;
    if (path.empty() || path.size() > longest || path.find('\0') != std::string::npos) {
        throw std::runtime_error("The path of a socket has 1 to " + std::to_string(longest) + " characters");
    }
    address_.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), address_.sun_path);
}

namespace {

FileDescriptor makeSocket() {
    const ReservedStandardDescriptors kept;
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket.isOpen()) {
        throw systemFailure();
    }
    return socket;
}

/// Keeps two servers that start at once from replacing each other's socket. Best effort: a lock held for long
/// by another program, or a directory that cannot be locked, must not keep the server from starting.
class FolderLock {
public:
    explicit FolderLock(const std::string& path) {
        const std::string::size_type separator = path.rfind('/');
        const std::string folder = separator == std::string::npos ? "." : path.substr(0, separator + 1);
        folder_ = FileDescriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        for (int attempt = 0; attempt < 50 && flock(folder_.number(), LOCK_EX | LOCK_NB) != 0; ++attempt) {
            if (errno != EWOULDBLOCK) {
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    /// Closing alone would not do: a child forked meanwhile has a copy.
    ~FolderLock() { flock(folder_.number(), LOCK_UN); }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    FileDescriptor folder_;
};

/// A forked child may hold the socket of a crashed server: connections then succeed, but nobody answers.
bool isServerGone(int connection) {
    ucred server = {};
    socklen_t size = sizeof server;
    return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &server, &size) == 0 && server.pid > 0 &&
           kill(server.pid, 0) != 0 && errno == ESRCH;
}

/// \return true if nobody serves the socket, or its server has just removed it
bool isStale(const std::string& path) {
    const FileDescriptor probe = makeSocket();
    const SocketAddress address(path);
    if (connect(probe.number(), address.get(), address.size()) == 0) {
        return isServerGone(probe.number());
    }
    if (errno != ECONNREFUSED && errno != ENOENT && errno != EAGAIN) {
        throw systemFailure();
    }
    return errno != EAGAIN;
}

void removeStaleFile(const std::string& path) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) {
        return; // or the path is unusable, which `bind` will report
    }
    if (!S_ISSOCK(status.st_mode)) {
        throw std::runtime_error("There is a file that is no socket");
    }
    if (!isStale(path)) {
        throw std::runtime_error("Another process serves it");
    }
    if (unlink(path.c_str()) != 0 && errno != ENOENT) {
        throw systemFailure();
    }
}

} // namespace

SocketFile::SocketFile(const std::string& path) : path_(path), socket_(makeSocket()) {
    const SocketAddress address(path); // throws before anything is changed
    const FolderLock lock(path);
    removeStaleFile(path);
    bindAndListen();
}

/// The file gets the socket's mode, set before `bind`, so that nobody else can open it in between.
void SocketFile::bindAndListen() {
    const SocketAddress address(path_);
    const int backlog = 16;
    struct stat status;
    if (fchmod(socket_.number(), S_IRUSR | S_IWUSR) != 0 ||
        bind(socket_.number(), address.get(), address.size()) != 0) {
        throw systemFailure();
    }
    if (listen(socket_.number(), backlog) != 0 || lstat(path_.c_str(), &status) != 0) {
        const int error = errno;
        unlink(path_.c_str());
        throw systemFailure(error);
    }
    device_ = status.st_dev;
    inode_ = status.st_ino;
}

SocketFile::~SocketFile() {
    // While the socket still listens, or another server could take the file for stale and replace it
    // meanwhile.
    if (isStillThere()) {
        unlink(path_.c_str());
    }
    // Affects the copies of forked children, too, so that no client waits for an answer.
    if (socket_.isStillOwn()) {
        shutdown(socket_.number(), SHUT_RDWR);
    }
}

bool SocketFile::isStillThere() const {
    struct stat status;
    return lstat(path_.c_str(), &status) == 0 && status.st_dev == device_ && status.st_ino == inode_;
}

namespace {

using Clock = std::chrono::steady_clock;

const char* const LATE = "No answer came in time";

} // namespace

struct LocalClient::Inside {
    /// Waits until the server may be written to or read from.
    /// \throw std::runtime_error at the deadline
    void waitFor(short event) const;

    FileDescriptor socket;
    Clock::time_point deadline;
};

void LocalClient::Inside::waitFor(short event) const {
    pollfd watched = {socket.number(), event, 0};
    do {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) {
            throw std::runtime_error(LATE);
        }
        poll(&watched, 1, static_cast<int>(std::min<std::int64_t>(left, 60000)));
    } while (watched.revents == 0);
}

namespace {

/// Relies on the kernel's credentials of the listening process, not on the file: anybody can create one in a
/// world-writable directory.
void requireTrusted(const FileDescriptor& socket) {
    ucred server = {};
    socklen_t size = sizeof server;
    if (getsockopt(socket.number(), SOL_SOCKET, SO_PEERCRED, &server, &size) != 0) {
        throw systemFailure();
    }
    const uid_t user = geteuid();
    if (user != 0 && server.uid != 0 && server.uid != user) {
        throw ForeignServer("the server belongs to another user (" + std::to_string(server.uid) +
                            "), who is not asked");
    }
}

FileDescriptor connectTo(const std::string& path, std::chrono::milliseconds limit) {
    const SocketAddress address(path);
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    timeval time = {};
    time.tv_sec = limit.count() / 1000;
    time.tv_usec = limit.count() % 1000 * 1000;
    const bool connected = socket.isOpen() &&
                           setsockopt(socket.number(), SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time) == 0 &&
                           connect(socket.number(), address.get(), address.size()) == 0;
    if (!connected) {
        throw errno == EAGAIN || errno == EINPROGRESS ? std::runtime_error(LATE) : systemFailure();
    }
    requireTrusted(socket);
    return socket;
}

} // namespace

LocalClient::LocalClient(const std::string& address, std::chrono::milliseconds limit)
    : inside_(new Inside{FileDescriptor(), Clock::now() + limit}) {
    inside_->socket = connectTo(address, limit);
}

LocalClient::~LocalClient() = default;

void LocalClient::send(const std::string& text) {
    for (std::size_t sent = 0; sent < text.size();) {
        inside_->waitFor(POLLOUT);
        const ssize_t count = ::send(inside_->socket.number(), text.data() + sent, text.size() - sent,
                                     MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno != EINTR && errno != EAGAIN) {
            throw systemFailure();
        }
        sent += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
}

std::string LocalClient::receive() {
    char buffer[4096];
    ssize_t count = 0;
    do {
        inside_->waitFor(POLLIN);
        count = recv(inside_->socket.number(), buffer, sizeof buffer, MSG_DONTWAIT);
    } while (count < 0 && (errno == EINTR || errno == EAGAIN));
    if (count < 0 && errno != ECONNRESET) {
        throw systemFailure();
    }
    return std::string(buffer, count < 0 ? 0 : static_cast<std::size_t>(count));
}

} // namespace Platform
} // namespace ZAV
