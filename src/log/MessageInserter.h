#pragma once

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
/// What "<<" of a logging macro is applied to, in the place of a `std::ostream`: whatever such a stream takes
/// it takes as well, with the same text.
///
/// - Built-in types and strings go straight into the message.
/// - A type that brings its "<<" with it, and a manipulator, get the message's stream.
/// - If the caller's code sees another "<<" for a `std::ostream`, such as one for containers, the conversion
///   leads to it; what follows then goes through the stream.
/// - What is left, such as enumerations and what converts to a number, takes the last operator.
///
/// It is a temporary, to which a "<<" for any kind of stream does not bind: such an operator as well gets the
/// stream itself.
class MessageInserter {
    struct LastChoice {
        LastChoice(const MessageInserter& inserter) : message(inserter.message_) {}
        MessageStream& message;
    };

public:
    explicit MessageInserter(MessageStream& message) : message_(message) {}

    /// Built-in types, by value: a constant needs no address, nor does a bit-field. Always inline, since
    /// nothing is left of it but a call, and the length of a literal is known then.
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

    /// Both arguments convert, so that any other "<<" is the better match; and it is a template, so that one
    /// that is no better is, too.
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
