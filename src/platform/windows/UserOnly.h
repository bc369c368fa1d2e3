#pragma once

#include <windows.h>

namespace ZAV {
namespace Platform {

/// The right to use an object, for the user of this process and nobody else.
class UserOnly {
public:
    /// \throw std::runtime_error if the system does not say who the user is
    UserOnly();
    ~UserOnly();
    UserOnly(const UserOnly&) = delete;
    UserOnly& operator=(const UserOnly&) = delete;

    SECURITY_ATTRIBUTES* get() noexcept { return &attributes_; }

private:
    SECURITY_ATTRIBUTES attributes_ = {};
};

} // namespace Platform
} // namespace ZAV
