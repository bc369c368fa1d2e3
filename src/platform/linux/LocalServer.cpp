#include "platform/LocalSocket.h"

#include "platform/linux/LocalSocket.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <vector>

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

namespace {

using Clock = std::chrono::steady_clock;

FileDescriptor makeStopSignal() {
    const ReservedStandardDescriptors kept;
    FileDescriptor signal(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!signal.isOpen()) {
        throw systemFailure();
    }
    return signal;
}

/// The socket file's mode already keeps other users out; this check is for a process that changed its user or
/// was handed an open connection.
bool mayBeServed(int connection) {
    ucred client = {};
    socklen_t size = sizeof client;
    return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &client, &size) == 0 &&
           (client.uid == geteuid() || client.uid == 0);
}

int toPollTimeout(std::optional<LocalServer::Milliseconds> limit) {
    // A program that has closed all descriptors, for example to become a daemon, cannot be woken from `poll`.
    const LocalServer::Milliseconds::rep longest = 2000; // the caller then calls again
    return static_cast<int>(limit ? std::clamp<LocalServer::Milliseconds::rep>(limit->count(), 0, longest)
                                  : longest);
}

} // namespace

struct LocalServer::Inside {
    Inside(const std::string& address, int maxClients)
        : stopSignal(makeStopSignal()), socket(address), clients(static_cast<std::size_t>(maxClients)) {}

    std::vector<pollfd> whatToPoll() const;
    Event proceed(int client);
    Event accept();
    bool mayAccept() const;
    int freeNumber() const;
    Event ready(const std::vector<pollfd>& polled);

    FileDescriptor stopSignal;
    std::atomic<bool> isStopped{false}; ///< needed if the signal's descriptor has been closed
    SocketFile socket;
    std::vector<LocalConnection> clients; ///< indexed by client number; closed if the number is free
    int lastServed = 0;                   ///< the client served last, whose turn comes last
    Clock::time_point acceptNotBefore;    ///< set after the system had no descriptor for a client
};

LocalServer::LocalServer(const std::string& address, int maxClients)
    : inside_(std::make_unique<Inside>(address, maxClients)) {}

LocalServer::~LocalServer() = default;

LocalServer::Event LocalServer::wait(std::optional<Milliseconds> limit) {
    if (inside_->acceptNotBefore > Clock::now()) {
        const Milliseconds untilNextAttempt(100);
        limit = limit ? std::min(*limit, untilNextAttempt) : untilNextAttempt;
    }
    std::vector<pollfd> polled = inside_->whatToPoll();
    const int ready = poll(polled.data(), polled.size(), toPollTimeout(limit));
    if (inside_->isStopped) {
        return Event{STOPPED, -1, std::string()};
    }
    if (ready <= 0) {
        return Event{NOTHING, -1, std::string()};
    }
    return inside_->ready(polled);
}

/// The stop signal, the listening socket, then all clients by number; `poll` ignores -1.
std::vector<pollfd> LocalServer::Inside::whatToPoll() const {
    std::vector<pollfd> polled;
    polled.push_back({stopSignal.number(), POLLIN, 0});
    polled.push_back({mayAccept() ? socket.descriptor() : -1, POLLIN, 0});
    for (const LocalConnection& client : clients) {
        polled.push_back({client.awaited() == 0 ? -1 : client.descriptor(), client.awaited(), 0});
    }
    return polled;
}

LocalServer::Event LocalServer::Inside::ready(const std::vector<pollfd>& polled) {
    const std::size_t firstClient = 2;
    if (polled[0].revents != 0) {
        return Event{STOPPED, -1, std::string()};
    }
    if (polled[1].revents != 0) {
        return accept();
    }
    const int count = static_cast<int>(clients.size());
    for (int step = 1; step <= count; ++step) {
        const int client = (lastServed + step) % count;
        if (polled[firstClient + static_cast<std::size_t>(client)].revents != 0) {
            lastServed = client;
            return proceed(client);
        }
    }
    return Event{NOTHING, -1, std::string()};
}

LocalServer::Event LocalServer::Inside::proceed(int number) {
    LocalConnection& client = clients[static_cast<std::size_t>(number)];
    const EventKind whenFinished = client.isReceiving() ? RECEIVED : SENT;
    Event event{NOTHING, number, std::string()};
    switch (client.proceed(event.bytes)) {
    case LocalConnection::FINISHED:
        event.kind = whenFinished;
        break;
    case LocalConnection::BROKEN:
        client.close();
        event.kind = LEFT;
        break;
    case LocalConnection::UNFINISHED:
        break;
    }
    return event;
}

LocalServer::Event LocalServer::Inside::accept() {
    const Milliseconds pause(100);
    const ReservedStandardDescriptors kept; // or a client gets what the program writes to a closed stream
    FileDescriptor connection(accept4(socket.descriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!connection.isOpen()) {
        acceptNotBefore = Clock::now() + pause;
        return Event{NOTHING, -1, std::string()};
    }
    if (!mayBeServed(connection.number())) {
        return Event{NOTHING, -1, std::string()};
    }
    const int number = freeNumber();
    clients[static_cast<std::size_t>(number)].open(std::move(connection));
    return Event{JOINED, number, std::string()};
}

bool LocalServer::Inside::mayAccept() const {
    return freeNumber() >= 0 && Clock::now() >= acceptNotBefore;
}

/// \return -1 if there is none
int LocalServer::Inside::freeNumber() const {
    const auto free = std::find_if(clients.begin(), clients.end(),
                                   [](const LocalConnection& client) { return !client.isOpen(); });
    return free == clients.end() ? -1 : static_cast<int>(free - clients.begin());
}

void LocalServer::receive(int client) {
    inside_->clients[static_cast<std::size_t>(client)].startReceiving();
}

void LocalServer::send(int client, std::string text) {
    inside_->clients[static_cast<std::size_t>(client)].startSending(std::move(text));
}

void LocalServer::drop(int client) {
    inside_->clients[static_cast<std::size_t>(client)].close();
}

/// Closes descriptors only: neither the list of clients nor the memory of a client is modified.
void LocalServer::closeInherited() noexcept {
    inside_->stopSignal.close();
    inside_->socket.closeInherited();
    for (LocalConnection& client : inside_->clients) {
        client.closeInherited();
    }
}

/// The program may have closed the signal's descriptor, whose number may now be a file's, which must not be
/// written to.
void LocalServer::stop() noexcept {
    inside_->isStopped = true;
    if (!inside_->stopSignal.isStillOwn()) {
        return;
    }
    const std::uint64_t one = 1;
    // Fails only if the counter is full, and then the signal is set anyway.
    [[maybe_unused]] const ssize_t written = write(inside_->stopSignal.number(), &one, sizeof one);
}

} // namespace Platform
} // namespace ZAV
