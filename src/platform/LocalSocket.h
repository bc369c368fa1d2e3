#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace ZAV {
namespace Platform {

/// A server for processes of the same user on this machine, with a few clients at once.
///
/// One thread handles events one after another and never blocks on a single client: each request to a client
/// completes with exactly one event of that client, whatever the others do. Only `stop` may be called from
/// another thread.
class LocalServer {
public:
    enum EventKind {
        NOTHING,  ///< timeout
        STOPPED,  ///< `stop` was called
        JOINED,   ///< a new client
        RECEIVED, ///< completes `receive`
        SENT,     ///< completes `send`
        LEFT      ///< the client has disconnected, and its number is free
    };

    struct Event {
        EventKind kind;
        int client;        ///< 0 to the maximum number of clients minus one; -1 if the event concerns none
        std::string bytes; ///< received, at least one
    };

    using Milliseconds = std::chrono::milliseconds;

    /// Claims the address exclusively.
    /// \param address on Linux the path of a socket, created for this user only; on Windows the name of a pipe
    /// \param maxClients how many are served at once; further ones wait until one disconnects
    /// \throw std::runtime_error with the reason if the address cannot be claimed
    LocalServer(const std::string& address, int maxClients);

    /// Disconnects the clients and releases the address. Not for a forked child, see `closeInherited`.
    ~LocalServer();

    LocalServer(const LocalServer&) = delete;
    LocalServer& operator=(const LocalServer&) = delete;

    /// Waits for the next event of any client; clients take turns.
    /// \param limit the timeout; none for no limit
    Event wait(std::optional<Milliseconds> limit);

    /// Starts receiving from a client with no other request pending.
    void receive(int client);

    /// Starts sending a whole text to a client with no other request pending.
    void send(int client, std::string text);

    /// Disconnects a client, cancelling its request; no event follows, and its number is free.
    void drop(int client);

    /// For a forked child: closes the inherited descriptors without affecting the parent's clients and
    /// address. The server's thread may have been interrupted anywhere, so the object must not be used or
    /// destroyed afterwards.
    void closeInherited() noexcept;

    /// Makes `wait` return `STOPPED` from now on. May be called from any thread.
    void stop() noexcept;

private:
    struct Inside;
    const std::unique_ptr<Inside> inside_;
};

/// Thrown if the server belongs to a user who is not trusted.
class ForeignServer : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A connection to a `LocalServer` of another process. Not thread-safe.
///
/// Only servers of the same user or of the administrator are trusted; on Linux, the administrator trusts any.
class LocalClient {
public:
    /// \param address the server's address
    /// \param limit timeout from now on, for all calls together
    /// \throw ForeignServer
    /// \throw std::runtime_error if there is no server or the connection is refused
    LocalClient(const std::string& address, std::chrono::milliseconds limit);
    ~LocalClient();
    LocalClient(const LocalClient&) = delete;
    LocalClient& operator=(const LocalClient&) = delete;

    /// \throw std::runtime_error if the server does not accept the whole text
    void send(const std::string& text);

    /// Waits for bytes from the server.
    /// \return an empty string if the server has hung up
    /// \throw std::runtime_error on timeout
    std::string receive();

private:
    struct Inside;
    const std::unique_ptr<Inside> inside_;
};

} // namespace Platform
} // namespace ZAV
