#pragma once

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>

namespace ZAV {
namespace Platform {

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
