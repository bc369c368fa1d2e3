#pragma once

#include <stdexcept>
#include <string>

namespace ZAV {
namespace Platform {

/// \return the name under which the system knows the pipe of an address
/// \throw std::runtime_error if no pipe can have that name
inline std::string pipeName(const std::string& address) {
    const std::string name = "\\\\.\\pipe\\" + address;
    const std::string forbidden("\\\0", 2);
    const std::size_t longest = 256;
    if (address.empty() || name.size() > longest || address.find_first_of(forbidden) != std::string::npos) {
        throw std::runtime_error("The name of a pipe has 1 to 247 characters, none of them a backslash");
    }
    return name;
}

} // namespace Platform
} // namespace ZAV
