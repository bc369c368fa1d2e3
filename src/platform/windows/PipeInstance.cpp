#include "platform/windows/PipeInstance.h"

#include "platform/windows/Handle.h"

#include <algorithm>

namespace ZAV {
namespace Platform {

namespace {

/// A request that was made, now or later to be finished.
bool isUnderWay(BOOL result) {
    return result || GetLastError() == ERROR_IO_PENDING;
}

} // namespace

PipeInstance::~PipeInstance() {
    cancel();
}

void PipeInstance::open(const std::string& name, int maxInstances, bool isFirst,
                        SECURITY_ATTRIBUTES* rights) {
    const DWORD first = isFirst ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0;
    const DWORD bufferSize = 4096;
    event_ = Handle(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    if (!event_.isOpen()) {
        throw systemFailure();
    }
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
        SetEvent(event_.get()); // which the system does not do for a client that was quicker than the call
        return;
    }
    noteStart(GetLastError() == ERROR_IO_PENDING);
}

void PipeInstance::startReceiving() {
    begin(RECEIVING);
    noteStart(isUnderWay(ReadFile(pipe_.get(), incoming_.data(), static_cast<DWORD>(incoming_.size()),
                                  nullptr, &overlapped_)));
}

void PipeInstance::startSending(std::string text) {
    outgoing_ = std::move(text);
    sent_ = 0;
    startWriting();
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

/// A request that failed at once is told by `proceed`, as one that fails later is.
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

/// Once it returns, the system does not touch this object any more.
void PipeInstance::cancel() {
    if (isPending_) {
        DWORD count = 0;
        CancelIoEx(pipe_.get(), &overlapped_);
        GetOverlappedResult(pipe_.get(), &overlapped_, &count, TRUE);
    }
    state_ = IDLE;
    isPending_ = false;
}

} // namespace Platform
} // namespace ZAV
