#include "platform/LocalServer.h"

#include "platform/windows/Handle.h"
#include "platform/windows/PipeInstance.h"
#include "platform/windows/PipeName.h"

#include <algorithm>
#include <vector>

namespace ZAV {
namespace Platform {

struct LocalServer::Inside {
    Inside(const std::string& address, int maxClients);

    std::vector<HANDLE> whatToWaitFor() const;
    Event proceed(int client);

    Handle stopSignal;
    std::vector<PipeInstance> instances; ///< by the number of the client
    int lastServed = 0;                  ///< whose turn it is last
};

namespace {

Handle makeStopSignal() {
    Handle signal(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    if (!signal.isOpen()) {
        throw systemFailure();
    }
    return signal;
}

DWORD toWaitTime(std::optional<LocalServer::Milliseconds> limit) {
    const LocalServer::Milliseconds::rep longest = 60000; // and then the caller asks again
    return limit ? static_cast<DWORD>(std::clamp<LocalServer::Milliseconds::rep>(limit->count(), 0, longest))
                 : INFINITE;
}

} // namespace

/// All instances are made at once, so that the system itself knows how many clients are served.
LocalServer::Inside::Inside(const std::string& address, int maxClients)
    : stopSignal(makeStopSignal()), instances(static_cast<std::size_t>(maxClients)) {
    const std::string name = pipeName(address);
    UserOnly rights;
    bool isFirst = true;
    for (PipeInstance& instance : instances) {
        instance.open(name, maxClients, isFirst, rights.get());
        isFirst = false;
    }
}

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

/// The signal, then all clients, beginning behind the one that was served last: the system tells of the first
/// in the list that is ready.
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
