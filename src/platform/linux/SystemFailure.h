#pragma once

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace ZAV {
namespace Platform {

/// \return the system's text for the error of the last call
inline std::runtime_error systemFailure(int error = errno) {
    return std::runtime_error(std::system_category().message(error));
}

} // namespace Platform
} // namespace ZAV
