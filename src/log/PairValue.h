#pragma once

#include "log/TaggedValue.h"
#include "zav-util/Export.h"

#include <cstddef>
#include <string_view>
#include <type_traits>

namespace ZAV {
namespace Log {

// Used by `log/LogContext.h` and `log/LogValues.h`, not directly.

/// A `long double` as text, in the shortest form that reads back the same: no other kind of value has all its
/// digits. What a `double` has no room for is no number to most readers of JSON, and a text here.
class LongDoubleText {
public:
    ZAV_LOG_API explicit LongDoubleText(long double value) noexcept;

    /// \return a value that refers to this object
    operator TaggedValue() const noexcept {
        TaggedValue value = std::string_view(characters_, size_);
        value.kind = kind_;
        return value;
    }

private:
    char characters_[56]; ///< 36 digits with sign, point and exponent are the most that any system has
    std::size_t size_;
    TaggedValue::Kind kind_;
};

/// \return a value of a pair with its tag: a text, a character, a boolean or a number. A null pointer in the place of
///         a text is an empty one. For a `long double` an object that becomes one, as long as it lives.
template <typename Value>
constexpr auto pairValue(const Value& value) {
    using Type = std::decay_t<const Value&>;
    if constexpr (std::is_null_pointer_v<Type>) {
        return TaggedValue(std::string_view());
    } else if constexpr (std::is_same_v<Type, const char*> || std::is_same_v<Type, char*>) {
        const char* const text = value;
        return TaggedValue(text == nullptr ? std::string_view() : std::string_view(text));
    } else if constexpr (std::is_convertible_v<const Value&, std::string_view>) {
        return TaggedValue(static_cast<std::string_view>(value));
    } else if constexpr (std::is_same_v<Type, long double>) {
        return LongDoubleText(value);
    } else if constexpr (std::is_arithmetic_v<Type> && areTagged<Type>) {
        return tag(value);
    } else {
        static_assert(std::is_void_v<Type>, "the value of a pair must be a text, a char, a bool or a number");
        return TaggedValue();
    }
}

} // namespace Log
} // namespace ZAV
