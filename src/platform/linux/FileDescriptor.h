#pragma once

#include <unistd.h>
#include <utility>

namespace ZAV {
namespace Platform {

/// Owns an open file, socket or the like, and closes it.
class FileDescriptor {
public:
    FileDescriptor() noexcept = default;
    explicit FileDescriptor(int number) noexcept : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, NONE)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~FileDescriptor() {
        if (isOpen()) {
            close(number_);
        }
    }

    bool isOpen() const noexcept { return number_ != NONE; }
    int number() const noexcept { return number_; }

private:
    static constexpr int NONE = -1;

    int number_ = NONE;
};

} // namespace Platform
} // namespace ZAV
