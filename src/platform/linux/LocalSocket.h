#pragma once

#include "platform/linux/FileDescriptor.h"

#include <cerrno>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/types.h>
#include <sys/un.h>
#include <system_error>

namespace ZAV {
namespace Platform {

/// \return the system's text for the error of the last call
inline std::runtime_error systemFailure(int error = errno) {
    return std::runtime_error(std::system_category().message(error));
}

/// The path of a local socket in the form in which the system takes it.
class SocketAddress {
public:
    /// \throw std::runtime_error if no socket can have that path
    explicit SocketAddress(const std::string& path);

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address_); }
    socklen_t size() const { return sizeof address_; }

private:
    sockaddr_un address_ = {};
};

/// A listening socket and its file, which nobody but this user may open and which goes with it. A forked
/// child must not destroy its copy, which would take the file from its parent.
class SocketFile {
public:
    /// Replaces the file of a socket whose server is gone.
    /// \throw std::runtime_error if another process serves the path, if there is another kind of file, or if the
    ///        system refuses
    explicit SocketFile(const std::string& path);
    ~SocketFile();
    SocketFile(const SocketFile&) = delete;
    SocketFile& operator=(const SocketFile&) = delete;

    /// Closes a forked child's copy.
    void closeInherited() noexcept { socket_.close(); }

    int descriptor() const noexcept { return socket_.number(); }

private:
    void bindAndListen();
    bool isStillThere() const;

    const std::string path_;
    FileDescriptor socket_;
    dev_t device_ = 0; ///< of the file, as is `inode_`: another file at the path is somebody else's
    ino_t inode_ = 0;
};

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
