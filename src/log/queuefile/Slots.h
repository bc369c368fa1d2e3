#pragma once

#include <cstddef>
#include <vector>

namespace ZAV {
namespace Log {

/// Which slots of a queue file are in use. It has no lock.
class Slots {
public:
    /// \param count of the file's slots, of which the first one, with the head, is in use
    /// \throw std::bad_alloc
    explicit Slots(std::size_t count = 0);

    std::size_t count() const noexcept { return isUsed_.size(); }

    /// \return how many are in use, the head's not counted
    std::size_t used() const noexcept { return used_; }

    /// Takes slots that lie behind each other.
    /// \param kept how many others have to stay free
    /// \return the first one; 0 if there are none
    std::size_t take(std::size_t slots, std::size_t kept) noexcept;

    /// Says that free slots are in use.
    void use(std::size_t first, std::size_t slots) noexcept;

    void free(std::size_t first, std::size_t slots) noexcept;

private:
    std::size_t find(std::size_t slots) const noexcept;

    std::vector<bool> isUsed_;
    std::size_t used_ = 0;
    std::size_t firstFree_ = 1; ///< all before it are in use
};

} // namespace Log
} // namespace ZAV
