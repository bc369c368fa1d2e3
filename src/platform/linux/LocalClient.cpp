#include "platform/LocalClient.h"

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/SocketAddress.h"
#include "platform/linux/SystemFailure.h"

#include <sys/time.h>

namespace ZAV {
namespace Platform {

struct LocalClient::Inside {
    FileDescriptor socket;
};

namespace {

/// A limit shows as an error of its own in each of the calls.
std::runtime_error failureOf(int error) {
    return error == EAGAIN || error == EINPROGRESS ? std::runtime_error("No answer came in time")
                                                   : systemFailure(error);
}

FileDescriptor connectTo(const std::string& path, std::chrono::milliseconds limit) {
    const SocketAddress address(path);
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    timeval time = {};
    time.tv_sec = limit.count() / 1000;
    time.tv_usec = limit.count() % 1000 * 1000;
    const bool connected = socket.isOpen() &&
                           setsockopt(socket.number(), SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time) == 0 &&
                           setsockopt(socket.number(), SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time) == 0 &&
                           connect(socket.number(), address.get(), address.size()) == 0;
    if (!connected) {
        throw failureOf(errno);
    }
    return socket;
}

} // namespace

LocalClient::LocalClient(const std::string& address, std::chrono::milliseconds limit)
    : inside_(new Inside{connectTo(address, limit)}) {}

LocalClient::~LocalClient() = default;

void LocalClient::send(const std::string& text) {
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t count =
            ::send(inside_->socket.number(), text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) {
            throw failureOf(errno);
        }
        sent += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
}

std::string LocalClient::receive() {
    char buffer[4096];
    ssize_t count = 0;
    do {
        count = recv(inside_->socket.number(), buffer, sizeof buffer, 0);
    } while (count < 0 && errno == EINTR);
    if (count < 0 && errno != ECONNRESET) {
        throw failureOf(errno);
    }
    return std::string(buffer, count < 0 ? 0 : static_cast<std::size_t>(count));
}

} // namespace Platform
} // namespace ZAV
