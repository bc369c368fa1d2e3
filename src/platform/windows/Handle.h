#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <windows.h>

namespace ZAV {
namespace Platform {

/// Owns a system handle and closes it.
class Handle {
public:
    Handle() noexcept = default;
    explicit Handle(HANDLE value) noexcept : value_(value == INVALID_HANDLE_VALUE ? nullptr : value) {}
    Handle(Handle&& other) noexcept : value_(std::exchange(other.value_, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }
    ~Handle() {
        if (isOpen()) {
            CloseHandle(value_);
        }
    }

    bool isOpen() const noexcept { return value_ != nullptr; }
    HANDLE get() const noexcept { return value_; }

    /// \return the handle, which the caller owns from now on
    HANDLE release() noexcept { return std::exchange(value_, nullptr); }

private:
    HANDLE value_ = nullptr;
};

/// \return an exception with the system's error text
inline std::runtime_error systemFailure(DWORD error = GetLastError()) {
    char text[512];
    DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                                  0, text, sizeof text, nullptr);
    const std::string endOfText = "\r\n. ";
    while (length > 0 && endOfText.find(text[length - 1]) != std::string::npos) {
        --length;
    }
    return std::runtime_error(length == 0 ? "Error " + std::to_string(error) : std::string(text, length));
}

/// \return a manual-reset event
/// \throw std::runtime_error if the system refuses
Handle makeEvent();

/// \return the full pipe name for an address
/// \throw std::runtime_error if the name is not valid for a pipe
inline std::string pipeName(const std::string& address) {
    const std::string name = "\\\\.\\pipe\\" + address;
    const std::string forbidden("\\\0", 2);
    const std::size_t longest = 256;
    if (address.empty() || name.size() > longest || address.find_first_of(forbidden) != std::string::npos) {
        throw std::runtime_error("The name of a pipe has 1 to 247 characters, none of them a backslash");
    }
    return name;
}

/// \return a security identifier in text form
std::string identifierText(PSID identifier);

/// \return the security identifier of this process's user, in text form
std::string userIdentifier();

/// Security attributes that give access to this process's user only.
class UserOnly {
public:
    /// \throw std::runtime_error if the user cannot be determined
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
