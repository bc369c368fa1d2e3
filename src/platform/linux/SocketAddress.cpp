#include "platform/linux/SocketAddress.h"

#include <algorithm>
#include <stdexcept>

namespace ZAV {
namespace Platform {

SocketAddress::SocketAddress(const std::string& path) {
    const std::size_t longest = sizeof address_.sun_path - 1;
    if (path.empty() || path.size() > longest || path.find('\0') != std::string::npos) {
        throw std::runtime_error("The path of a socket has 1 to " + std::to_string(longest) + " characters");
    }
    address_.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), address_.sun_path);
}

} // namespace Platform
} // namespace ZAV
