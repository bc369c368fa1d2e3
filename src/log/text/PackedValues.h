#pragma once

#include "log/TaggedValue.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace ZAV {
namespace Log {

// The values of a message as a self-contained byte sequence, which includes the characters of texts. Integers
// are stored without leading zero bytes, so that most values are no longer than their text. The functions are
// inline, since the kind is known where most values are packed.

namespace Packing {

using Kind = TaggedValue::Kind;

// Each value begins with a byte that holds its kind and the size of the integer that follows.

constexpr unsigned KIND_BITS = 4;
constexpr unsigned KIND_MASK = (1U << KIND_BITS) - 1;
constexpr unsigned NULL_TEXT = 15; ///< used as the size
constexpr std::size_t MAX_BYTES_OF_NUMBER = 1 + sizeof(std::uint64_t);

inline char headOf(Kind kind, unsigned size) {
    return static_cast<char>(static_cast<unsigned>(kind) | size << KIND_BITS);
}

/// Writes the lowest byte first, without trailing zeros.
inline char* writeNumber(char* place, Kind kind, std::uint64_t number) {
    char* next = place + 1;
    for (; number != 0; number >>= 8U) {
        *next++ = static_cast<char>(number & 0xFFU);
    }
    *place = headOf(kind, static_cast<unsigned>(next - place - 1));
    return next;
}

inline std::uint64_t readNumber(const char*& bytes, unsigned size) {
    std::uint64_t number = 0;
    for (unsigned i = 0; i < size; ++i) {
        number |= static_cast<std::uint64_t>(static_cast<unsigned char>(*bytes++)) << 8U * i;
    }
    return number;
}

/// Zigzag encoding: a number of small magnitude is short, whatever its sign.
inline std::uint64_t zigzagEncode(long long number) {
    const auto bits = static_cast<std::uint64_t>(number);
    return number < 0 ? ~(bits << 1U) : bits << 1U;
}

inline long long zigzagDecode(std::uint64_t number) {
    return static_cast<long long>((number & 1U) != 0 ? ~(number >> 1U) : number >> 1U);
}

template <typename Value>
inline char* writeBytes(char* place, Kind kind, Value value) {
    *place = headOf(kind, 0);
    std::memcpy(place + 1, &value, sizeof value);
    return place + 1 + sizeof value;
}

template <typename Value>
Value readBytes(const char*& bytes) {
    Value value;
    std::memcpy(&value, bytes, sizeof value);
    bytes += sizeof value;
    return value;
}

inline char* writeText(char* place, Kind kind, std::string_view text) {
    char* const characters = writeNumber(place, kind, text.size());
    return characters + text.copy(characters, text.size());
}

inline std::string_view readText(const char*& bytes, unsigned sizeOfLength) {
    const auto length = static_cast<std::size_t>(readNumber(bytes, sizeOfLength));
    const std::string_view text(bytes, length);
    bytes += length;
    return text;
}

/// Including its terminating NUL.
inline char* writeCString(char* place, const TaggedValue& value) {
    if (value.text == nullptr) {
        *place = headOf(value.kind, NULL_TEXT);
        return place + 1;
    }
    char* const characters = writeNumber(place, value.kind, value.size + 1);
    std::memcpy(characters, value.text, value.size);
    characters[value.size] = '\0';
    return characters + value.size + 1;
}

} // namespace Packing

/// \param value `size` must be set even for a C string: if the program changes that concurrently, the text is wrong,
///        but nothing worse happens
/// \return upper bound of the bytes that the value takes, whatever its kind
inline std::size_t packedSize(const TaggedValue& value) noexcept {
    return Packing::MAX_BYTES_OF_NUMBER + value.size + 1; // the NUL of a C string
}

/// Always inline: where the kind is known, it compiles to a few instructions.
/// \param place has room for the value
/// \return the end of what was written
[[gnu::always_inline]] inline char* packValue(char* place, const TaggedValue& value) noexcept {
    using namespace Packing;
    switch (value.kind) {
    case Kind::TEXT:
    case Kind::NUMBER:
        return writeText(place, value.kind, {value.text, value.size});
    case Kind::C_STRING:
        return writeCString(place, value);
    case Kind::SIGNED:
        return writeNumber(place, value.kind, zigzagEncode(value.signedNumber));
    case Kind::UNSIGNED:
        return writeNumber(place, value.kind, value.unsignedNumber);
    case Kind::DOUBLE:
        return writeBytes(place, value.kind, value.doubleNumber);
    case Kind::FLOAT:
        return writeBytes(place, value.kind, value.floatNumber);
    case Kind::CHARACTER:
        return writeBytes(place, value.kind, value.character);
    case Kind::BOOLEAN:
        return writeNumber(place, value.kind, value.boolean ? 1 : 0);
    case Kind::ADDRESS:
        break;
    }
    return writeBytes(place, Kind::ADDRESS, value.address);
}

/// Reads a packed value and advances to the next one.
/// \return the value; its text is a view into the bytes
inline TaggedValue unpackValue(const char*& bytes) noexcept {
    using namespace Packing;
    const unsigned head = static_cast<unsigned char>(*bytes++);
    const unsigned size = head >> KIND_BITS;
    switch (static_cast<Kind>(head & KIND_MASK)) {
    case Kind::TEXT:
        return readText(bytes, size);
    case Kind::C_STRING:
        return size == NULL_TEXT ? nullptr : readText(bytes, size).data();
    case Kind::SIGNED:
        return zigzagDecode(readNumber(bytes, size));
    case Kind::UNSIGNED:
        return static_cast<unsigned long long>(readNumber(bytes, size));
    case Kind::DOUBLE:
        return readBytes<double>(bytes);
    case Kind::FLOAT:
        return readBytes<float>(bytes);
    case Kind::CHARACTER:
        return readBytes<char>(bytes);
    case Kind::BOOLEAN:
        return readNumber(bytes, size) != 0;
    case Kind::NUMBER: {
        TaggedValue number = readText(bytes, size);
        number.kind = Kind::NUMBER;
        return number;
    }
    case Kind::ADDRESS:
        break;
    }
    return readBytes<const void*>(bytes);
}

} // namespace Log
} // namespace ZAV
