#pragma once

#include <string>
#include <sys/socket.h>
#include <sys/un.h>

namespace ZAV {
namespace Platform {

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

} // namespace Platform
} // namespace ZAV
