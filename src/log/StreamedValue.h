#pragma once

/// \file
/// Implementation of the macros of `log/LogMacros.h`: values that only a stream can write; not used directly.

#include "log/MessageStream.h"

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>

namespace ZAV {
namespace Log {

/// Used by the macros of `log/LogMacros.h`, not directly.
///
/// How a value is streamed, by its type. An expression with "<<" alone does not show where the operator comes
/// from.
namespace Streaming {

template <typename Type, typename... Types>
constexpr bool isOneOf = (std::is_same_v<Type, Types> || ...);

/// Whether a stream accepts such an argument at all.
template <typename Argument, typename = void>
inline constexpr bool isStreamable = false;
template <typename Argument>
inline constexpr bool
    isStreamable<Argument, std::void_t<decltype(std::declval<std::ostream&>() << std::declval<Argument>())>> =
        true;

/// Whether there is a non-member "<<" for the type. It is written as a call, to exclude the member operators
/// of the stream, which convert many types to a number or a pointer.
template <typename Argument, typename = void>
inline constexpr bool hasOperator = false;
template <typename Argument>
inline constexpr bool hasOperator<
    Argument, std::void_t<decltype(operator<<(std::declval<std::ostream&>(), std::declval<Argument>()))>> =
    true;

template <typename Type>
constexpr bool isCharacter = isOneOf<Type, char, signed char, unsigned char>;

template <typename Type>
constexpr bool isNumber = isOneOf<Type, bool, short, unsigned short, int, unsigned, long, unsigned long,
                                  long long, unsigned long long, float, double, long double>;

template <typename Type>
constexpr bool isText =
    std::is_pointer_v<Type>&& isCharacter<std::remove_const_t<std::remove_pointer_t<Type>>>;

/// The types for which an application cannot define another "<<".
template <typename Type>
constexpr bool isBuiltIn =
    isCharacter<Type> || isNumber<Type> || isText<Type> || isOneOf<Type, void*, const void*, std::nullptr_t>;

template <typename Type>
constexpr bool isString = isOneOf<Type, std::string, std::string_view>;

/// Types of the application or the standard library that have an operator of their own.
template <typename Type>
constexpr bool isForeign = !isBuiltIn<std::decay_t<Type>> && !isString<Type> && hasOperator<const Type&>;

template <typename Type, bool = std::is_enum_v<Type>>
inline constexpr bool isPlainEnumeration = false;
/// An enumeration that a stream writes as a number.
template <typename Type>
inline constexpr bool isPlainEnumeration<Type, true> =
    isNumber<std::underlying_type_t<Type>>&& isStreamable<const Type&> && !hasOperator<const Type&>;

} // namespace Streaming

/// A reference to a value of any type that a stream accepts. Since it takes a conversion, it is the last
/// choice: any other "<<" that is visible to the caller is preferred.
class StreamedValue {
public:
    template <typename Type, std::enable_if_t<Streaming::isStreamable<const Type&>, int> = 0>
    StreamedValue(const Type& value) : value_(addressOf(value)), write_(&writeAs<const Type>) {}

    /// For the few types whose operator or conversion takes them as non-const.
    template <
        typename Type,
        std::enable_if_t<Streaming::isStreamable<Type&> && !Streaming::isStreamable<const Type&>, int> = 0>
    StreamedValue(Type& value) : value_(addressOf(value)), write_(&writeAs<Type>) {}

    /// Writes the value, which must still exist.
    void writeTo(MessageStream& message) const { write_(message, value_); }

private:
    template <typename Type>
    static const void* addressOf(Type& value) {
        if constexpr (std::is_function_v<Type>) {
            return reinterpret_cast<const void*>(&value);
        } else {
            return const_cast<const void*>(static_cast<const volatile void*>(std::addressof(value)));
        }
    }

    template <typename Type>
    static void writeAs(MessageStream& message, const void* address) {
        if constexpr (std::is_function_v<Type>) {
            message.stream() << reinterpret_cast<Type*>(const_cast<void*>(address));
            message.settle();
        } else {
            Type& value = *static_cast<Type*>(const_cast<void*>(address));
            if constexpr (Streaming::isPlainEnumeration<std::remove_const_t<Type>>) {
                message.write(static_cast<std::underlying_type_t<Type>>(value));
            } else {
                message.stream() << value;
                message.settle();
            }
        }
    }

    const void* value_;
    void (*write_)(MessageStream&, const void*);
};

} // namespace Log
} // namespace ZAV
