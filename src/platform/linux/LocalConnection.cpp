#include "platform/linux/LocalConnection.h"

#include <cerrno>
#include <poll.h>
#include <sys/socket.h>

namespace ZAV {
namespace Platform {

namespace {

LocalConnection::Progress progressAfterError() {
    const bool isOnlyBusy = errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
    return isOnlyBusy ? LocalConnection::UNFINISHED : LocalConnection::BROKEN;
}

} // namespace

void LocalConnection::open(FileDescriptor socket) noexcept {
    socket_ = std::move(socket);
    server_ = getpid();
    state_ = IDLE;
}

void LocalConnection::close() noexcept {
    if (socket_.isStillOwn() && server_ == getpid()) {
        shutdown(socket_.number(), SHUT_RDWR);
    }
    socket_ = FileDescriptor();
    state_ = IDLE;
    outgoing_ = std::string();
}

void LocalConnection::startSending(std::string text) noexcept {
    outgoing_ = std::move(text);
    sent_ = 0;
    state_ = SENDING;
}

LocalConnection::Progress LocalConnection::proceed(std::string& bytes) {
    const Progress progress = isReceiving() ? receive(bytes) : send();
    if (progress == FINISHED) {
        state_ = IDLE;
    }
    return progress;
}

LocalConnection::Progress LocalConnection::receive(std::string& bytes) {
    char buffer[4096];
    const ssize_t count = recv(socket_.number(), buffer, sizeof buffer, MSG_DONTWAIT);
    if (count < 0) {
        return progressAfterError();
    }
    bytes.assign(buffer, static_cast<std::size_t>(count));
    return count == 0 ? BROKEN : FINISHED;
}

LocalConnection::Progress LocalConnection::send() {
    const ssize_t count = ::send(socket_.number(), outgoing_.data() + sent_, outgoing_.size() - sent_,
                                 MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count < 0) {
        return progressAfterError();
    }
    sent_ += static_cast<std::size_t>(count);
    return sent_ == outgoing_.size() ? FINISHED : UNFINISHED;
}

short LocalConnection::awaited() const noexcept {
    switch (state_) {
    case RECEIVING:
        return POLLIN;
    case SENDING:
        return POLLOUT;
    case IDLE:
        break;
    }
    return 0;
}

} // namespace Platform
} // namespace ZAV
