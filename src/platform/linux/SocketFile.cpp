#include "platform/linux/SocketFile.h"

#include "platform/linux/SocketAddress.h"
#include "platform/linux/SystemFailure.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

namespace ZAV {
namespace Platform {

namespace {

FileDescriptor makeSocket() {
    const KeptStandardNumbers kept;
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket.isOpen()) {
        throw systemFailure();
    }
    return socket;
}

/// Keeps two servers that start at once from replacing each other's socket. A lock that a stranger holds for
/// long, or a folder that cannot be locked, must not keep the server from starting.
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
    /// Not by closing it alone: a child that was forked meanwhile has a copy.
    ~FolderLock() { flock(folder_.number(), LOCK_UN); }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    FileDescriptor folder_;
};

/// A forked child may hold the socket of a server that has crashed: connections are then taken, but nobody
/// answers.
bool isServerGone(int connection) {
    ucred server = {};
    socklen_t size = sizeof server;
    return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &server, &size) == 0 && server.pid > 0 &&
           kill(server.pid, 0) != 0 && errno == ESRCH;
}

/// \return true if the file is that of a socket which nobody serves, or has just been removed by its server
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
        return; // or the path cannot be used at all, as the system says later
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
    const SocketAddress address(path); // which may not be one
    const FolderLock lock(path);
    removeStaleFile(path);
    bindAndListen();
}

/// The file gets the mode that the socket has, so that nobody else can open it in between.
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
    // While it still listens, so that no other server takes the file for a stale one and replaces it
    // meanwhile.
    if (isStillThere()) {
        unlink(path_.c_str());
    }
    // Also for the copies of forked children, so that nobody waits for an answer.
    if (socket_.isStillOwn()) {
        shutdown(socket_.number(), SHUT_RDWR);
    }
}

bool SocketFile::isStillThere() const {
    struct stat status;
    return lstat(path_.c_str(), &status) == 0 && status.st_dev == device_ && status.st_ino == inode_;
}

} // namespace Platform
} // namespace ZAV
