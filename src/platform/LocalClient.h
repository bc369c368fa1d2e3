#pragma once

#include <chrono>
#include <memory>
#include <string>

namespace ZAV {
namespace Platform {

/// A connection to a `LocalServer` of another process. It has no lock.
class LocalClient {
public:
    /// \param address as the server was given it
    /// \param limit how long each call may wait
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
