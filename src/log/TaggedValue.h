#pragma once

/// \file
/// Implementation of the logging macros: what a call passes to the library; not used directly.

#include "log/Level.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace ZAV {
namespace Log {

/// The source location of a logging call. Its views are valid as long as that code is loaded.
struct Place {
    std::string_view file;
    std::string_view format; ///< empty if the text is streamed
    int line;
    Level::LogLevel level;
};

/// A value of a message before it is formatted, with a tag for its type. It does not own texts, which must
/// outlive it.
struct TaggedValue {
    enum class Kind : std::uint8_t {
        TEXT,     ///< `size` characters; any of them may be 0
        C_STRING, ///< characters up to a 0, or null. A kind of its own, since it can be formatted as an
                  ///< address
        SIGNED,
        UNSIGNED,
        DOUBLE,
        FLOAT, ///< as a double, 0.1F would be shown as "0.10000000149011612"
        CHARACTER,
        BOOLEAN,
        ADDRESS,
        NUMBER ///< `size` characters that form a number
    };

    TaggedValue() = default;
    constexpr TaggedValue(std::string_view value)
        : text(value.data()), size(value.size()), kind(Kind::TEXT) {}
    constexpr TaggedValue(const char* value) : text(value), kind(Kind::C_STRING) {}
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
    std::size_t size = 0; ///< of a `TEXT` or `NUMBER`, else 0
    Kind kind;
};

/// The type that values of a type are tagged as: one of those that `TaggedValue` is constructed from, or
/// `void` if there is no tag. Each type is written out, since that compiles faster than conditions.
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

/// Whether all the types have a tag.
template <typename... Values>
constexpr bool areTagged = (!std::is_void_v<typename Tagging<Values>::Type> && ...);

template <typename Value>
constexpr TaggedValue tag(const Value& value) {
    return static_cast<typename Tagging<Value>::Type>(value);
}

} // namespace Log
} // namespace ZAV
