#pragma once

#include <string>
#include <windows.h>

namespace ZAV {
namespace Platform {

/// \return a security identifier in its text form
std::string identifierText(PSID identifier);

/// \return the security identifier of this process's user, in its text form
std::string userIdentifier();

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
