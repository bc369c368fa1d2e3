#include "platform/LocalSocket.h"

#include "platform/windows/Handle.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace ZAV {
namespace Platform {

namespace {

/// One client slot of a `LocalServer`: waits for a client, serves it, and waits for the next.
///
/// The system writes to this object while a request is pending, so it cannot be moved.
class PipeInstance {
public:
    enum Progress {
        UNFINISHED, ///< the request continues when `readyEvent` is set again
        JOINED,     ///< a client has connected
        RECEIVED,
        SENT,
        BROKEN ///< the connection is lost; `hangUp` makes room for the next client
    };

    PipeInstance() = default;
    ~PipeInstance() { cancel(); }
    PipeInstance(const PipeInstance&) = delete;
    PipeInstance& operator=(const PipeInstance&) = delete;

    /// Creates the pipe instance and waits for a client.
    /// \param isFirst whether to fail if a pipe of that name exists
    /// \throw std::runtime_error if the system refuses
    void open(const std::string& name, int maxInstances, bool isFirst, SECURITY_ATTRIBUTES* rights);

    void startReceiving();

    void startSending(std::string text) {
        outgoing_ = std::move(text);
        sent_ = 0;
        startWriting();
    }

    /// Cancels the pending request, disconnects the client and waits for the next.
    void hangUp();

    /// Checks the progress of the request.
    /// \param bytes receives what has been received
    Progress proceed(std::string& bytes);

    /// \return the event that is set when `proceed` has something to report
    HANDLE readyEvent() const noexcept { return event_.get(); }

private:
    enum State { IDLE, CONNECTING, RECEIVING, SENDING };

    void startConnecting();
    void startWriting();
    void begin(State state);
    void noteStart(bool finishedOrPending);
    void cancel();

    Handle event_;
    Handle pipe_;
    OVERLAPPED overlapped_ = {};
    State state_ = IDLE;
    bool isPending_ = false; ///< the system still uses `overlapped_` and the buffers
    bool failed_ = false;    ///< the request has failed
    std::array<char, 4096> incoming_ = {};
    std::string outgoing_;
    std::size_t sent_ = 0; ///< bytes of `outgoing_` sent so far
};

/// \return whether a request was started, whether or not it has finished yet
bool isUnderWay(BOOL result) {
    return result || GetLastError() == ERROR_IO_PENDING;
}

void PipeInstance::open(const std::string& name, int maxInstances, bool isFirst,
                        SECURITY_ATTRIBUTES* rights) {
    const DWORD first = isFirst ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0;
    const DWORD bufferSize = 4096;
    event_ = makeEvent();
    pipe_ =
        Handle(CreateNamedPipeA(name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | first,
                                PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS,
                                static_cast<DWORD>(maxInstances), bufferSize, bufferSize, 0, rights));
    if (!pipe_.isOpen()) {
        const DWORD error = GetLastError();
        const bool isTaken = error == ERROR_ACCESS_DENIED || error == ERROR_PIPE_BUSY;
        throw isFirst && isTaken ? std::runtime_error("Another process serves it") : systemFailure(error);
    }
    startConnecting();
}

void PipeInstance::startConnecting() {
    begin(CONNECTING);
    const bool hasClient =
        !ConnectNamedPipe(pipe_.get(), &overlapped_) && GetLastError() == ERROR_PIPE_CONNECTED;
    if (hasClient) {
        SetEvent(event_.get()); // the system does not do this for a client that connected before the call
        return;
    }
    noteStart(GetLastError() == ERROR_IO_PENDING);
}

void PipeInstance::startReceiving() {
    begin(RECEIVING);
    noteStart(isUnderWay(ReadFile(pipe_.get(), incoming_.data(), static_cast<DWORD>(incoming_.size()),
                                  nullptr, &overlapped_)));
}

void PipeInstance::startWriting() {
    const std::size_t piece = std::min<std::size_t>(outgoing_.size() - sent_, 64 * 1024);
    begin(SENDING);
    noteStart(isUnderWay(
        WriteFile(pipe_.get(), outgoing_.data() + sent_, static_cast<DWORD>(piece), nullptr, &overlapped_)));
}

void PipeInstance::begin(State state) {
    overlapped_ = {};
    overlapped_.hEvent = event_.get();
    ResetEvent(event_.get());
    state_ = state;
    isPending_ = false;
    failed_ = false;
}

/// A request that fails at once is reported by `proceed`, like one that fails later.
void PipeInstance::noteStart(bool finishedOrPending) {
    isPending_ = finishedOrPending;
    failed_ = !finishedOrPending;
    if (failed_) {
        SetEvent(event_.get());
    }
}

PipeInstance::Progress PipeInstance::proceed(std::string& bytes) {
    DWORD count = 0;
    if (isPending_ && !GetOverlappedResult(pipe_.get(), &overlapped_, &count, FALSE)) {
        if (GetLastError() == ERROR_IO_INCOMPLETE) {
            return UNFINISHED;
        }
        failed_ = true;
    }
    const State state = state_;
    state_ = IDLE;
    isPending_ = false;
    ResetEvent(event_.get());
    if (failed_ || (state == RECEIVING && count == 0)) {
        return BROKEN;
    }
    if (state == CONNECTING) {
        return JOINED;
    }
    if (state == RECEIVING) {
        bytes.assign(incoming_.data(), count);
        return RECEIVED;
    }
    sent_ += count;
    if (sent_ < outgoing_.size()) {
        startWriting();
        return UNFINISHED;
    }
    return SENT;
}

void PipeInstance::hangUp() {
    cancel();
    DisconnectNamedPipe(pipe_.get());
    startConnecting();
}

/// Once it returns, the system no longer accesses this object.
void PipeInstance::cancel() {
    if (isPending_) {
        DWORD count = 0;
        CancelIoEx(pipe_.get(), &overlapped_);
        GetOverlappedResult(pipe_.get(), &overlapped_, &count, TRUE);
    }
    state_ = IDLE;
    isPending_ = false;
}

DWORD toWaitTime(std::optional<LocalServer::Milliseconds> limit) {
    const LocalServer::Milliseconds::rep longest = 60000; // the caller then calls again
    return limit ? static_cast<DWORD>(std::clamp<LocalServer::Milliseconds::rep>(limit->count(), 0, longest))
                 : INFINITE;
}

} // namespace

struct LocalServer::Inside {
    /// All instances are created at once, so the system itself limits the number of clients.
    Inside(const std::string& address, int maxClients)
        : stopSignal(makeEvent()), instances(static_cast<std::size_t>(maxClients)) {
        const std::string name = pipeName(address);
        UserOnly rights;
        bool isFirst = true;
        for (PipeInstance& instance : instances) {
            instance.open(name, maxClients, isFirst, rights.get());
            isFirst = false;
        }
    }

    std::vector<HANDLE> whatToWaitFor() const;
    Event proceed(int client);

    Handle stopSignal;
    std::vector<PipeInstance> instances; ///< indexed by client number
    int lastServed = 0;                  ///< the client served last, whose turn comes last
};

LocalServer::LocalServer(const std::string& address, int maxClients)
    : inside_(std::make_unique<Inside>(address, maxClients)) {}

LocalServer::~LocalServer() = default;

LocalServer::Event LocalServer::wait(std::optional<Milliseconds> limit) {
    const std::vector<HANDLE> handles = inside_->whatToWaitFor();
    const DWORD result =
        WaitForMultipleObjects(static_cast<DWORD>(handles.size()), handles.data(), FALSE, toWaitTime(limit));
    const DWORD index = result - WAIT_OBJECT_0;
    if (index >= handles.size()) {
        return Event{NOTHING, -1, std::string()};
    }
    if (index == 0) {
        return Event{STOPPED, -1, std::string()};
    }
    const int count = static_cast<int>(inside_->instances.size());
    return inside_->proceed((inside_->lastServed + static_cast<int>(index)) % count);
}

/// The stop signal, then all clients, starting after the one served last: the system reports the first in the
/// list that is ready.
std::vector<HANDLE> LocalServer::Inside::whatToWaitFor() const {
    std::vector<HANDLE> handles = {stopSignal.get()};
    for (std::size_t step = 1; step <= instances.size(); ++step) {
        const std::size_t client = (static_cast<std::size_t>(lastServed) + step) % instances.size();
        handles.push_back(instances[client].readyEvent());
    }
    return handles;
}

LocalServer::Event LocalServer::Inside::proceed(int client) {
    Event event{NOTHING, client, std::string()};
    lastServed = client;
    PipeInstance& instance = instances[static_cast<std::size_t>(client)];
    switch (instance.proceed(event.bytes)) {
    case PipeInstance::JOINED:
        event.kind = LocalServer::JOINED;
        break;
    case PipeInstance::RECEIVED:
        event.kind = LocalServer::RECEIVED;
        break;
    case PipeInstance::SENT:
        event.kind = LocalServer::SENT;
        break;
    case PipeInstance::BROKEN:
        instance.hangUp();
        event.kind = LEFT;
        break;
    case PipeInstance::UNFINISHED:
        break;
    }
    return event;
}

void LocalServer::receive(int client) {
    inside_->instances[static_cast<std::size_t>(client)].startReceiving();
}

void LocalServer::send(int client, std::string text) {
    inside_->instances[static_cast<std::size_t>(client)].startSending(std::move(text));
}

void LocalServer::drop(int client) {
    inside_->instances[static_cast<std::size_t>(client)].hangUp();
}

/// No process forks here.
void LocalServer::closeInherited() noexcept {}

void LocalServer::stop() noexcept {
    SetEvent(inside_->stopSignal.get());
}

} // namespace Platform
} // namespace ZAV
