#include "platform/LocalClient.h"

#include "platform/windows/Handle.h"
#include "platform/windows/PipeName.h"
#include "platform/windows/SystemFailure.h"

#include <algorithm>

namespace ZAV {
namespace Platform {

struct LocalClient::Inside {
    Handle pipe;
    Handle ready;
    DWORD limit; ///< in milliseconds
};

namespace {

/// The server learns who its client is, but cannot act in the client's name.
Handle openPipe(const std::string& name) {
    return Handle(CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                              FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION,
                              nullptr));
}

/// While the server has all the clients that it serves at once, it waits for one of them to leave.
Handle connectTo(const std::string& address, DWORD limit) {
    const std::string name = pipeName(address);
    Handle pipe = openPipe(name);
    while (!pipe.isOpen() && GetLastError() == ERROR_PIPE_BUSY) {
        if (!WaitNamedPipeA(name.c_str(), limit)) {
            throw systemFailure();
        }
        pipe = openPipe(name); // which another client may have been quicker to take
    }
    if (!pipe.isOpen()) {
        throw systemFailure();
    }
    return pipe;
}

} // namespace

LocalClient::LocalClient(const std::string& address, std::chrono::milliseconds limit)
    : inside_(new Inside{connectTo(address, static_cast<DWORD>(limit.count())),
                         Handle(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
                         static_cast<DWORD>(limit.count())}) {}

LocalClient::~LocalClient() = default;

namespace {

/// Waits for a request that the system has taken, and takes it back if that lasts too long.
/// \param taken what the call that made the request gave
/// \return how many bytes were read or written; 0 if the server has hung up
DWORD finish(BOOL taken, HANDLE pipe, OVERLAPPED& request, DWORD limit) {
    const bool isUnderWay = taken || GetLastError() == ERROR_IO_PENDING;
    const bool isLate = isUnderWay && WaitForSingleObject(request.hEvent, limit) == WAIT_TIMEOUT;
    if (isLate) {
        CancelIoEx(pipe, &request);
    }
    DWORD count = 0;
    if (isUnderWay && GetOverlappedResult(pipe, &request, &count, TRUE)) {
        return count;
    }
    if (isLate) {
        throw std::runtime_error("No answer came in time");
    }
    if (GetLastError() == ERROR_BROKEN_PIPE || GetLastError() == ERROR_PIPE_NOT_CONNECTED) {
        return 0;
    }
    throw systemFailure();
}

} // namespace

void LocalClient::send(const std::string& text) {
    for (std::size_t sent = 0; sent < text.size();) {
        OVERLAPPED request = {};
        request.hEvent = inside_->ready.get();
        const auto piece = static_cast<DWORD>(std::min<std::size_t>(text.size() - sent, 4096));
        const BOOL taken = WriteFile(inside_->pipe.get(), text.data() + sent, piece, nullptr, &request);
        const DWORD count = finish(taken, inside_->pipe.get(), request, inside_->limit);
        if (count == 0) {
            throw std::runtime_error("The server has hung up");
        }
        sent += count;
    }
}

std::string LocalClient::receive() {
    char buffer[4096];
    OVERLAPPED request = {};
    request.hEvent = inside_->ready.get();
    const BOOL taken = ReadFile(inside_->pipe.get(), buffer, sizeof buffer, nullptr, &request);
    return std::string(buffer, finish(taken, inside_->pipe.get(), request, inside_->limit));
}

} // namespace Platform
} // namespace ZAV
