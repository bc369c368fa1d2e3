#include "log/queuefile/Slots.h"

#include <algorithm>

namespace ZAV {
namespace Log {

Slots::Slots(std::size_t count) : isUsed_(count) {
    if (count != 0) {
        isUsed_[0] = true;
    }
}

std::size_t Slots::take(std::size_t slots, std::size_t kept) noexcept {
    const std::size_t first = used_ + slots + kept < count() ? find(slots) : 0;
    if (first != 0) {
        use(first, slots);
    }
    return first;
}

void Slots::use(std::size_t first, std::size_t slots) noexcept {
    std::fill_n(isUsed_.begin() + static_cast<std::ptrdiff_t>(first), slots, true);
    used_ += slots;
    while (firstFree_ < count() && isUsed_[firstFree_]) {
        ++firstFree_;
    }
}

void Slots::free(std::size_t first, std::size_t slots) noexcept {
    std::fill_n(isUsed_.begin() + static_cast<std::ptrdiff_t>(first), slots, false);
    used_ -= slots;
    firstFree_ = std::min(firstFree_, first);
}

/// \return 0 if there is no such run of free ones
std::size_t Slots::find(std::size_t slots) const noexcept {
    std::size_t length = 0;
    for (std::size_t slot = firstFree_; slot < count(); ++slot) {
        length = isUsed_[slot] ? 0 : length + 1;
        if (length == slots) {
            return slot + 1 - slots;
        }
    }
    return 0;
}

} // namespace Log
} // namespace ZAV
