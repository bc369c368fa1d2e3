#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace ZAV {
namespace Platform {

/// Listens for processes of the same user on this machine, and exchanges bytes with a few of them at once.
///
/// One thread asks for one event after the other. It never waits for a single client: what is asked of a
/// client ends in exactly one event of that client, whatever the others do. Only `stop` may be called from
/// another thread.
class LocalServer {
public:
    enum EventKind {
        NOTHING,  ///< the time is over
        STOPPED,  ///< `stop` was called
        JOINED,   ///< a new client
        RECEIVED, ///< what `receive` asked for
        SENT,     ///< what `send` asked for
        LEFT      ///< the client is gone, and its number is free
    };

    struct Event {
        EventKind kind;
        int client;        ///< of 0 and above, below the greatest number of clients; -1 if it concerns none
        std::string bytes; ///< received, at least one
    };

    using Milliseconds = std::chrono::milliseconds;

    /// Takes the address; nobody else is served there meanwhile.
    /// \param address on Linux the path of a socket that is made, for this user alone; on Windows the name of a
    ///        pipe
    /// \param maxClients how many are served at once; further ones wait until one leaves
    /// \throw std::runtime_error if the address cannot be taken, with the reason
    LocalServer(const std::string& address, int maxClients);

    /// Drops the clients and gives the address back. Not in a forked child, see `closeInherited`.
    ~LocalServer();

    LocalServer(const LocalServer&) = delete;
    LocalServer& operator=(const LocalServer&) = delete;

    /// Waits for the next event of any client; clients take turns.
    /// \param limit how long at most; none if there is no limit
    Event wait(std::optional<Milliseconds> limit);

    /// Asks for some bytes of a client that has nothing else to do.
    void receive(int client);

    /// Sends all of a text to a client that has nothing else to do.
    void send(int client, std::string text);

    /// Disconnects a client, whatever it is doing; no event follows, and its number is free.
    void drop(int client);

    /// In a forked child, where the server's thread may have been in the middle of anything: closes what the
    /// child has inherited, and leaves the parent's clients and address alone. The object must not be used or
    /// destroyed afterwards.
    void closeInherited() noexcept;

    /// Has `wait` give `STOPPED` from now on. May be called from any thread.
    void stop() noexcept;

private:
    struct Inside;
    const std::unique_ptr<Inside> inside_;
};

/// Says that an address is served by somebody whom this user does not trust.
class ForeignServer : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A connection to a `LocalServer` of another process. It has no lock.
///
/// Only a server of the same user or of the system's administrator is spoken to; the administrator speaks to
/// any.
class LocalClient {
public:
    /// \param address as the server was given it
    /// \param limit how long all calls together may take, from now on
    /// \throw ForeignServer
    /// \throw std::runtime_error if nobody is there, or if the user may not speak to who is
    LocalClient(const std::string& address, std::chrono::milliseconds limit);
    ~LocalClient();
    LocalClient(const LocalClient&) = delete;
    LocalClient& operator=(const LocalClient&) = delete;

    /// \throw std::runtime_error if the server does not take all of the text
    void send(const std::string& text);

    /// Waits for some bytes of the server.
    /// \return nothing if the server has hung up
    /// \throw std::runtime_error if nothing came in time
    std::string receive();

private:
    struct Inside;
    const std::unique_ptr<Inside> inside_;
};

} // namespace Platform
} // namespace ZAV
