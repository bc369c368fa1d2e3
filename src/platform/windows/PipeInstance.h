#pragma once

#include "platform/windows/Handle.h"

#include <array>
#include <cstddef>
#include <string>

namespace ZAV {
namespace Platform {

/// One place for a client of a `LocalServer`: it waits for one, serves it, and waits for the next.
///
/// The system writes into this object while a request is under way, so it stays where it is.
class PipeInstance {
public:
    enum Progress {
        UNFINISHED, ///< the request goes on when `readyEvent` is set again
        JOINED,     ///< a client has come
        RECEIVED,
        SENT,
        BROKEN ///< the client is gone; `hangUp` makes room for the next
    };

    PipeInstance() = default;
    ~PipeInstance();
    PipeInstance(const PipeInstance&) = delete;
    PipeInstance& operator=(const PipeInstance&) = delete;

    /// Makes the instance and waits for a client.
    /// \param isFirst whether nobody else may have made a pipe of that name
    /// \throw std::runtime_error if the system refuses
    void open(const std::string& name, int maxInstances, bool isFirst, SECURITY_ATTRIBUTES* rights);

    void startReceiving();
    void startSending(std::string text);

    /// Ends whatever is under way, disconnects the client and waits for the next.
    void hangUp();

    /// Looks how far the request is. What has been received is then in `bytes`.
    Progress proceed(std::string& bytes);

    /// \return what the system sets when `proceed` has something to tell
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
    bool isPending_ = false; ///< the system still has `overlapped_` and the buffers
    bool failed_ = false;    ///< the request could not even be made
    std::array<char, 4096> incoming_ = {};
    std::string outgoing_;
    std::size_t sent_ = 0; ///< how much of `outgoing_`
};

} // namespace Platform
} // namespace ZAV
