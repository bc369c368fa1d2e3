#pragma once

#include "log/TaggedValue.h"

#include <string_view>
#include <type_traits>

namespace ZAV {
namespace Log {

/// Used by `log/LogContext.h` and `log/LogValues.h`, not directly.
///
/// \return a value of a pair with its tag: a text, a character, a boolean or a number. A null pointer in the place of a
///         text is an empty one.
template <typename Value>
constexpr TaggedValue pairValue(const Value& value) {
    using Type = std::decay_t<const Value&>;
    if constexpr (std::is_same_v<Type, const char*> || std::is_same_v<Type, char*>) {
        const char* const text = value;
        return text == nullptr ? std::string_view() : std::string_view(text);
    } else if constexpr (std::is_convertible_v<const Value&, std::string_view>) {
        return static_cast<std::string_view>(value);
    } else if constexpr (std::is_same_v<Type, long double>) {
        return static_cast<double>(value);
    } else {
        static_assert(std::is_arithmetic_v<Type> && areTagged<Type>,
                      "the value of a pair is a text, a char, a bool or a number");
        return tag(value);
    }
}

} // namespace Log
} // namespace ZAV
