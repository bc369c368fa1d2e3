#pragma once

#include <utility>
#include <windows.h>

namespace ZAV {
namespace Platform {

/// Owns an object of the system and closes it.
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

    /// \return the object, which the caller owns from now on
    HANDLE release() noexcept { return std::exchange(value_, nullptr); }

private:
    HANDLE value_ = nullptr;
};

} // namespace Platform
} // namespace ZAV
