#pragma once

/// \file
/// Implementation of the macros of `log/LogMacros.h`: what "<<" is applied to; not used directly.

#include "log/MessageStream.h"
#include "log/StreamedValue.h"

#include <cstddef>
#include <ios>
#include <ostream>
#include <string_view>
#include <type_traits>

namespace ZAV {
namespace Log {

/// Used by the macros of `log/LogMacros.h`, not directly.
///
/// The left operand of "<<" in a logging macro, in place of a `std::ostream`. It accepts whatever such a
/// stream accepts, with the same result.
///
/// - Built-in types and strings are appended to the message directly.
/// - A type with a "<<" of its own, and a manipulator, get the message's stream.
/// - If another "<<" for a `std::ostream` is visible to the caller, such as one for containers, the
///   conversion selects it; whatever follows is then written to the stream.
/// - Everything else, such as enumerations and types that convert to a number, uses the last operator.
///
/// It is a temporary, so that a "<<" template for any kind of stream does not bind to it but to the stream
/// itself.
class MessageInserter {
    struct LastChoice {
        LastChoice(const MessageInserter& inserter) : message(inserter.message_) {}
        MessageStream& message;
    };

public:
    explicit MessageInserter(MessageStream& message) : message_(message) {}

    /// Built-in types are taken by value, since constants and bit-fields need not have an address. Always
    /// inlined, since nothing remains but a call, and the length of a literal is then known.
    template <typename Type, std::enable_if_t<Streaming::isBuiltIn<Type>, int> = 0>
    [[gnu::always_inline]] MessageInserter operator<<(Type value) const {
        if constexpr (Streaming::isText<Type>) {
            const auto* const text = reinterpret_cast<const char*>(value);
            message_.writeText(text == nullptr ? std::string_view("(null)") : std::string_view(text));
        } else if constexpr (Streaming::isCharacter<Type>) {
            message_.write(static_cast<char>(value));
        } else if constexpr (std::is_same_v<Type, std::nullptr_t>) {
            message_.writeText("nullptr");
        } else if constexpr (std::is_same_v<Type, float>) {
            message_.write(static_cast<double>(value));
        } else {
            message_.write(value);
        }
        return *this;
    }

    template <typename Type, std::enable_if_t<Streaming::isString<Type>, int> = 0>
    MessageInserter operator<<(const Type& text) const {
        message_.writeText(text);
        return *this;
    }

    template <typename Type, std::enable_if_t<Streaming::isForeign<Type>, int> = 0>
    MessageInserter operator<<(const Type& value) const {
        return stream(value);
    }

    MessageInserter operator<<(std::ostream& (*manipulator)(std::ostream&)) const {
        return stream(manipulator);
    }
    MessageInserter operator<<(std::ios& (*manipulator)(std::ios&)) const { return stream(manipulator); }
    MessageInserter operator<<(std::ios_base& (*manipulator)(std::ios_base&)) const {
        return stream(manipulator);
    }

    operator std::ostream&() const { return message_.stream(); }

    /// Both arguments need a conversion, so that any other "<<" is a better match. It is a template, so that
    /// it also loses to an operator that is merely as good.
    template <typename = void>
    friend MessageInserter operator<<(const LastChoice& inserter, const StreamedValue& value) {
        value.writeTo(inserter.message);
        return MessageInserter(inserter.message);
    }

private:
    template <typename Value>
    MessageInserter stream(const Value& value) const {
        message_.stream() << value;
        message_.settle();
        return *this;
    }

    MessageStream& message_;
};

} // namespace Log
} // namespace ZAV
