#include "platform/FileLock.h"

#include <system_error>
#include <utility>
#include <windows.h>

namespace ZAV {
namespace Platform {

FileLock::FileLock(FileLock&& other) noexcept : handle_(std::exchange(other.handle_, NONE)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

FileLock::~FileLock() {
    if (handle_ != NONE) {
        CloseHandle(reinterpret_cast<HANDLE>(handle_));
    }
}

/// A file that is open and shared with nobody is a lock.
FileLock::Result FileLock::acquire(const std::string& path, std::string& problem) {
    if (handle_ != NONE) {
        return HELD;
    }
    const HANDLE handle = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle != INVALID_HANDLE_VALUE) {
        handle_ = reinterpret_cast<std::intptr_t>(handle);
        return HELD;
    }
    const DWORD error = GetLastError();
    problem = std::system_category().message(static_cast<int>(error));
    return error == ERROR_SHARING_VIOLATION ? HELD_BY_ANOTHER : CANNOT_BE_DECIDED;
}

} // namespace Platform
} // namespace ZAV
