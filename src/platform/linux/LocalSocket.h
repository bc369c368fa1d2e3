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

/// \return an exception with the system's error text
inline std::runtime_error systemFailure(int error = errno) {
    return std::runtime_error(std::system_category().message(error));
}

/// The path of a local socket as a socket address.
class SocketAddress {
public:
    /// \throw std::runtime_error if the path is not valid for a socket
    explicit SocketAddress(const std::string& path);

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address_); }
    socklen_t size() const { return sizeof address_; }

private:
    sockaddr_un address_ = {};
};

/// A listening socket and its file, which only this user may open and which the destructor removes. A forked
/// child must not destroy its copy, since that would remove its parent's file.
class SocketFile {
public:
    /// Replaces the file of a socket whose server is gone.
    /// \throw std::runtime_error if another process serves the path, if it is not a socket, or if the system refuses
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
    dev_t device_ = 0; ///< of the file, like `inode_`: any other file at the path is somebody else's
    ino_t inode_ = 0;
};

/// One client of a `LocalServer` and its pending request. Nothing here blocks.
class LocalConnection {
public:
    enum Progress {
        UNFINISHED, ///< the request continues when the client is ready again
        FINISHED,   ///< the request is done
        BROKEN      ///< the connection is lost
    };

    LocalConnection() noexcept = default;
    ~LocalConnection() { close(); }
    LocalConnection(const LocalConnection&) = delete;
    LocalConnection& operator=(const LocalConnection&) = delete;

    /// \param socket non-blocking
    void open(FileDescriptor socket) noexcept;

    /// Disconnects, even if a forked child has a copy of the socket; in such a child, closes only the copy.
    void close() noexcept;

    /// Closes a forked child's copy without touching memory.
    void closeInherited() noexcept { socket_.close(); }

    void startReceiving() noexcept { state_ = RECEIVING; }
    void startSending(std::string text) noexcept;

    /// Continues the request.
    /// \param bytes receives what has been received when that is finished
    Progress proceed(std::string& bytes);

    bool isOpen() const noexcept { return socket_.isOpen(); }
    bool isReceiving() const noexcept { return state_ == RECEIVING; }
    int descriptor() const noexcept { return socket_.number(); }

    /// \return the `poll` event that the request waits for; 0 if idle
    short awaited() const noexcept;

private:
    enum State { IDLE, RECEIVING, SENDING };

    Progress receive(std::string& bytes);
    Progress send();

    FileDescriptor socket_;
    pid_t server_ = 0; ///< the process that opened the connection
    State state_ = IDLE;
    std::string outgoing_;
    std::size_t sent_ = 0; ///< bytes of `outgoing_` sent so far
};

} // namespace Platform
} // namespace ZAV
