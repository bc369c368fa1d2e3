#include "platform/LocalSocket.h"

#include "platform/windows/Handle.h"

#include <aclapi.h>
#include <algorithm>

namespace ZAV {
namespace Platform {

namespace {

using Clock = std::chrono::steady_clock;

/// \return the milliseconds until a deadline; 0 if it has passed
DWORD until(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left <= 0 ? 0 : static_cast<DWORD>(std::min<std::int64_t>(left, 24 * 3600 * 1000));
}

std::runtime_error timedOut() {
    return std::runtime_error("No answer came in time");
}

} // namespace

struct LocalClient::Inside {
    Handle pipe;
    Handle ready;
    Clock::time_point deadline;
};

namespace {

struct Description {
    ~Description() { LocalFree(value); }
    PSECURITY_DESCRIPTOR value = nullptr;
};

/// A pipe is owned by the user who created it, or by the administrators group if that user is a member.
void requireTrusted(HANDLE pipe) {
    const char* const localSystem = "S-1-5-18";
    const char* const administrators = "S-1-5-32-544";
    PSID owner = nullptr; // points into the description
    Description description;
    const DWORD error = GetSecurityInfo(pipe, SE_KERNEL_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr,
                                        nullptr, nullptr, &description.value);
    if (error != ERROR_SUCCESS) {
        throw systemFailure(error);
    }
    const std::string identifier = identifierText(owner);
    if (identifier != userIdentifier() && identifier != localSystem && identifier != administrators) {
        throw ForeignServer("the server belongs to another user (" + identifier + "), who is not asked");
    }
}

/// The server can identify the client, but not impersonate it.
Handle openPipe(const std::string& name) {
    return Handle(CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                              FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION,
                              nullptr));
}

/// If the server already has its maximum number of clients, waits until one disconnects.
Handle connectTo(const std::string& address, Clock::time_point deadline) {
    const std::string name = pipeName(address);
    Handle pipe = openPipe(name);
    while (!pipe.isOpen() && GetLastError() == ERROR_PIPE_BUSY) {
        const DWORD left = until(deadline);
        if (left == 0) { // which would mean the server's default timeout
            throw timedOut();
        }
        if (!WaitNamedPipeA(name.c_str(), left)) {
            const DWORD error = GetLastError();
            throw error == ERROR_SEM_TIMEOUT ? timedOut() : systemFailure(error);
        }
        pipe = openPipe(name); // another client may have been faster
    }
    if (!pipe.isOpen()) {
        throw systemFailure();
    }
    requireTrusted(pipe.get());
    return pipe;
}

} // namespace

LocalClient::LocalClient(const std::string& address, std::chrono::milliseconds limit)
    : inside_(
          new Inside{Handle(), Handle(CreateEventA(nullptr, TRUE, FALSE, nullptr)), Clock::now() + limit}) {
    inside_->pipe = connectTo(address, inside_->deadline);
}

LocalClient::~LocalClient() = default;

namespace {

/// Waits for a request to complete, and cancels it on timeout.
/// \param taken the result of the call that made the request
/// \return how many bytes were read or written; 0 if the server has hung up
DWORD finish(BOOL taken, HANDLE pipe, OVERLAPPED& request, Clock::time_point deadline) {
    const bool isUnderWay = taken || GetLastError() == ERROR_IO_PENDING;
    const bool isLate = isUnderWay && (until(deadline) == 0 ||
                                       WaitForSingleObject(request.hEvent, until(deadline)) == WAIT_TIMEOUT);
    if (isLate) {
        CancelIoEx(pipe, &request);
    }
    DWORD count = 0;
    if (isUnderWay && GetOverlappedResult(pipe, &request, &count, TRUE) && !isLate) {
        return count;
    }
    if (isLate) {
        throw timedOut();
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
        const DWORD count = finish(taken, inside_->pipe.get(), request, inside_->deadline);
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
    return std::string(buffer, finish(taken, inside_->pipe.get(), request, inside_->deadline));
}

} // namespace Platform
} // namespace ZAV
