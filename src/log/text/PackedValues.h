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

inline unsigned bytesOf(std::uint64_t number) {
    return number == 0 ? 0 : (71U - static_cast<unsigned>(__builtin_clzll(number))) / 8;
}

/// Writes the lowest byte first, without trailing zeros: these are written as well, since that is faster than
/// a loop, but do not count.
/// \param place has room for `MAX_BYTES_OF_NUMBER`
inline char* writeNumber(char* place, Kind kind, std::uint64_t number) {
    static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the lowest byte must be the first");
    const unsigned size = bytesOf(number);
    *place = headOf(kind, size);
    std::memcpy(place + 1, &number, sizeof number);
    return place + 1 + size;
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

} // namespace Packing

/// \return upper bound of the bytes that `packCString` writes
inline std::size_t packedCStringSize(std::size_t length) noexcept {
    return Packing::MAX_BYTES_OF_NUMBER + length + 1;
}

/// Packs a C string, including its terminating NUL. If the program changes it concurrently, the text is
/// wrong, but nothing worse happens.
/// \param place has room for it
/// \param text may be null; the length is then 0
/// \return the end of what was written
inline char* packCString(char* place, const char* text, std::size_t length) noexcept {
    using namespace Packing;
    if (text == nullptr) {
        *place = headOf(Kind::C_STRING, NULL_TEXT);
        return place + 1;
    }
    char* const characters = writeNumber(place, Kind::C_STRING, length + 1);
    std::memcpy(characters, text, length);
    characters[length] = '\0';
    return characters + length + 1;
}

/// \return upper bound of the bytes that `packValue` writes, whatever the value's kind
inline std::size_t packedSize(const TaggedValue& value) noexcept {
    return Packing::MAX_BYTES_OF_NUMBER + value.size;
}

/// Always inline: where the kind is known, it compiles to a few instructions.
/// \param place has room for the value
/// \param value no C string
/// \return the end of what was written
[[gnu::always_inline]] inline char* packValue(char* place, const TaggedValue& value) noexcept {
    using namespace Packing;
    switch (value.kind) {
    case Kind::TEXT:
    case Kind::NUMBER:
        return writeText(place, value.kind, {value.text, value.size});
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
    case Kind::C_STRING:
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
