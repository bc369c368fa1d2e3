#include "log/PairValue.h"

#include <charconv>
#include <limits>

namespace ZAV {
namespace Log {

LongDoubleText::LongDoubleText(long double value) noexcept
    : size_(static_cast<std::size_t>(std::to_chars(characters_, characters_ + sizeof characters_, value).ptr -
                                     characters_)),
      kind_(TaggedValue::Kind::TEXT) {
    constexpr long double LARGEST = std::numeric_limits<double>::max();
    if (value >= -LARGEST && value <= LARGEST) {
        kind_ = TaggedValue::Kind::NUMBER;
    }
}

} // namespace Log
} // namespace ZAV
