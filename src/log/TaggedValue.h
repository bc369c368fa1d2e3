#pragma once

#include "log/Level.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace ZAV {
namespace Log {

// Used by the logging macros, not directly: what a call hands to the library.

/// A place in a program that logs. Its texts last as long as the code of the place.
struct Place {
    std::string_view file;
    std::string_view format; ///< empty if the text is streamed
    int line;
    Level::LogLevel level;
};

/// A value of a message before it becomes text: a few bytes that say what they are. Texts are not copied and
/// must last as long as the value is used.
struct TaggedValue {
    enum class Kind : std::uint8_t {
        TEXT,     ///< `size` characters; any of them may be 0
        C_STRING, ///< characters that end with a 0, or null. As a kind of its own it can be shown as an
                  ///< address
        SIGNED,
        UNSIGNED,
        DOUBLE,
        FLOAT, ///< as a double, 0.1F would show as "0.10000000149011612"
        CHARACTER,
        BOOLEAN,
        ADDRESS,
        NUMBER ///< `size` characters that are a number
    };

    TaggedValue() = default;
    constexpr TaggedValue(std::string_view value)
        : text(value.data()), size(value.size()), kind(Kind::TEXT) {}
    constexpr TaggedValue(const char* value)
        : text(value), size(value == nullptr ? 0 : std::char_traits<char>::length(value)),
          kind(Kind::C_STRING) {}
    constexpr TaggedValue(long long value) : signedNumber(value), kind(Kind::SIGNED) {}
    constexpr TaggedValue(unsigned long long value) : unsignedNumber(value), kind(Kind::UNSIGNED) {}
    constexpr TaggedValue(double value) : doubleNumber(value), kind(Kind::DOUBLE) {}
    constexpr TaggedValue(float value) : floatNumber(value), kind(Kind::FLOAT) {}
    constexpr TaggedValue(char value) : character(value), kind(Kind::CHARACTER) {}
    constexpr TaggedValue(bool value) : boolean(value), kind(Kind::BOOLEAN) {}
    constexpr TaggedValue(const void* value) : address(value), kind(Kind::ADDRESS) {}

    union {
        const char* text;
        long long signedNumber;
        unsigned long long unsignedNumber;
        double doubleNumber;
        float floatNumber;
        char character;
        bool boolean;
        const void* address;
    };
    std::size_t size = 0; ///< of a text, in characters; 0 for all else
    Kind kind;
};

/// As what values of a type are tagged: one of the types that `TaggedValue` is made from, or `void` for a
/// type that has no tag. Each type is written out, since the compiler gets over that sooner than over
/// conditions.
template <typename Value>
struct Tagging {
    using Type = void;
};
template <typename Tag>
struct TaggedAs {
    using Type = Tag;
};

// clang-format off
template <> struct Tagging<signed char> : TaggedAs<long long> {};
template <> struct Tagging<short> : TaggedAs<long long> {};
template <> struct Tagging<int> : TaggedAs<long long> {};
template <> struct Tagging<long> : TaggedAs<long long> {};
template <> struct Tagging<long long> : TaggedAs<long long> {};
template <> struct Tagging<unsigned char> : TaggedAs<unsigned long long> {};
template <> struct Tagging<unsigned short> : TaggedAs<unsigned long long> {};
template <> struct Tagging<unsigned> : TaggedAs<unsigned long long> {};
template <> struct Tagging<unsigned long> : TaggedAs<unsigned long long> {};
template <> struct Tagging<unsigned long long> : TaggedAs<unsigned long long> {};
template <> struct Tagging<float> : TaggedAs<float> {};
template <> struct Tagging<double> : TaggedAs<double> {};
template <> struct Tagging<char> : TaggedAs<char> {};
template <> struct Tagging<bool> : TaggedAs<bool> {};
template <> struct Tagging<std::nullptr_t> : TaggedAs<const void*> {};
template <> struct Tagging<void*> : TaggedAs<const void*> {};
template <> struct Tagging<const void*> : TaggedAs<const void*> {};
template <> struct Tagging<char*> : TaggedAs<const char*> {};
template <> struct Tagging<const char*> : TaggedAs<const char*> {};
template <std::size_t SIZE> struct Tagging<char[SIZE]> : TaggedAs<const char*> {};
template <> struct Tagging<std::string_view> : TaggedAs<std::string_view> {};
template <typename Allocator>
struct Tagging<std::basic_string<char, std::char_traits<char>, Allocator>> : TaggedAs<std::string_view> {};
// clang-format on

/// Whether values of all the types have a tag.
template <typename... Values>
constexpr bool areTagged = (!std::is_void_v<typename Tagging<Values>::Type> && ...);

template <typename Value>
constexpr TaggedValue tag(const Value& value) {
    return static_cast<typename Tagging<Value>::Type>(value);
}

} // namespace Log
} // namespace ZAV
