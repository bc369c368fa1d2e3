#pragma once

#include <cstddef>

namespace ZAV {
namespace Platform {

/// Zeroed memory that a forked child has in common with its parent: each sees what the other writes there.
/// What is kept in it must get along without locks, since a process may end at any moment, and be the same at
/// any address.
class ForkedMemory {
public:
    /// \throw std::bad_alloc
    explicit ForkedMemory(std::size_t size);
    ~ForkedMemory();
    ForkedMemory(const ForkedMemory&) = delete;
    ForkedMemory& operator=(const ForkedMemory&) = delete;

    void* get() const noexcept { return memory_; }

private:
    const std::size_t size_;
    void* const memory_;
};

} // namespace Platform
} // namespace ZAV
