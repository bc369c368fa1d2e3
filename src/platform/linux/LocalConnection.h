#pragma once

#include "platform/linux/FileDescriptor.h"

#include <cstddef>
#include <string>

namespace ZAV {
namespace Platform {

/// One client of a `LocalServer`, and what was asked of it. Nothing here waits.
class LocalConnection {
public:
    enum Progress {
        UNFINISHED, ///< the request goes on when the client is ready again
        FINISHED,   ///< the request is done
        BROKEN      ///< the client is gone
    };

    LocalConnection() noexcept = default;
    ~LocalConnection() { close(); }
    LocalConnection(const LocalConnection&) = delete;
    LocalConnection& operator=(const LocalConnection&) = delete;

    /// \param socket not blocking
    void open(FileDescriptor socket) noexcept;

    /// Hangs up, also where a forked child has a copy of the socket; such a child closes its copy alone.
    void close() noexcept;

    /// Closes a forked child's copy, and leaves the memory alone.
    void closeInherited() noexcept { socket_.close(); }

    void startReceiving() noexcept { state_ = RECEIVING; }
    void startSending(std::string text) noexcept;

    /// Goes on with the request. What has been received is in `bytes` when it is finished.
    Progress proceed(std::string& bytes);

    bool isOpen() const noexcept { return socket_.isOpen(); }
    bool isReceiving() const noexcept { return state_ == RECEIVING; }
    int descriptor() const noexcept { return socket_.number(); }

    /// \return the `poll` event that the request waits for; 0 if there is none
    short awaited() const noexcept;

private:
    enum State { IDLE, RECEIVING, SENDING };

    Progress receive(std::string& bytes);
    Progress send();

    FileDescriptor socket_;
    pid_t server_ = 0; ///< the process that opened it
    State state_ = IDLE;
    std::string outgoing_;
    std::size_t sent_ = 0; ///< how much of `outgoing_`
};

} // namespace Platform
} // namespace ZAV
