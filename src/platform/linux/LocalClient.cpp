#include "platform/LocalClient.h"

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/SocketAddress.h"
#include "platform/linux/SystemFailure.h"

#include <algorithm>
#include <poll.h>
#include <sys/time.h>

namespace ZAV {
namespace Platform {

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

/// The kernel says who has made the other end a server, which its file does not: anybody can make one in a
/// folder that is open to all.
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
