#pragma once

/// \file
/// Implementation of `log/LogContext.h` and `log/LogValues.h`: keys and values; not used directly.

#include "log/TaggedValue.h"
#include "zav-util/Export.h"

#include <cstddef>
#include <string_view>
#include <type_traits>

namespace ZAV {
namespace Log {

/// A view of a key or a text that is passed as an argument: of whatever converts to `std::string_view`. A
/// null pointer is an empty text.
class TextArgument {
public:
    template <typename Text,
              typename = std::enable_if_t<std::is_convertible_v<const Text&, std::string_view>>>
    constexpr TextArgument(const Text& text) : view_(viewOf(text)) {}

    constexpr operator std::string_view() const { return view_; }

private:
    template <typename Text>
    static constexpr std::string_view viewOf(const Text& text) {
        if constexpr (std::is_null_pointer_v<Text>) {
            return {};
        } else if constexpr (std::is_convertible_v<const Text&, const char*>) {
            const char* const characters = text;
            return characters == nullptr ? std::string_view() : std::string_view(characters);
        } else {
            return text;
        }
    }

    std::string_view view_;
};

/// A `long double` as text, in the shortest form that reads back the same, since no other kind of value can
/// hold all its digits. A number beyond the range of a `double` is tagged as a text, since most JSON parsers
/// reject such a number.
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
    char characters_[56]; ///< enough for any system: 36 digits, sign, point and exponent
    std::size_t size_;
    TaggedValue::Kind kind_;
};

/// \return the tagged value of a pair: a text, a character, a boolean or a number. A null pointer in place of
///         a text is an empty text. For a `long double`, an object that converts to a tagged value and must
///         outlive that.
template <typename Value>
constexpr auto pairValue(const Value& value) {
    using Type = std::decay_t<const Value&>;
    if constexpr (std::is_convertible_v<const Value&, std::string_view>) {
        return TaggedValue(std::string_view(TextArgument(value)));
    } else if constexpr (std::is_same_v<Type, long double>) {
        return LongDoubleText(value);
    } else if constexpr (std::is_arithmetic_v<Type> && areTagged<Type>) {
        return tag(static_cast<Type>(value)); // the cast is for volatile values
    } else {
        static_assert(std::is_void_v<Type>, "the value of a pair must be a text, a char, a bool or a number");
        return TaggedValue();
    }
}

} // namespace Log
} // namespace ZAV
