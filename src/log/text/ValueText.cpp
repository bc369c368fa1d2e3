#include "log/text/ValueText.h"

#include <charconv>
#include <cmath>
#include <cstdint>

namespace ZAV {
namespace Log {

namespace {

constexpr int DIGITS = 6;
constexpr std::uint32_t POWERS_OF_TEN[] = {1,      10,      100,      1000,      10000,
                                           100000, 1000000, 10000000, 100000000, 1000000000};

/// A number with six digits: `digits` / 10^`decimals`.
struct Decimal {
    std::uint32_t digits;
    int decimals;
};

/// \param number from 0.0001 to below 1000000
/// \return whether it is a multiple of 2^-32, so that its product with a power of ten below 1000000 is exact
bool hasExactProducts(double number) {
    const double multiple = number * 4294967296.0;
    return multiple == static_cast<double>(static_cast<std::uint64_t>(multiple));
}

// The next two are always inlined: called as functions, they made a streamed number noticeably slower.

/// Finds the nearest number with six digits, for the usual numbers: neither tiny nor huge, nor so near the
/// middle between two candidates that only exact arithmetic can decide.
/// \param number from 0.0001 to below 1000000
/// \return false if exact arithmetic is needed
[[gnu::always_inline]] inline bool toDecimal(double number, Decimal& decimal) {
    static constexpr double BOUNDS[] = {0.001, 0.01, 0.1, 1, 10, 100, 1000, 10000, 100000};
    constexpr int MAX_DECIMALS = 9;
    // Far above the multiplication's rounding error.
    constexpr double DOUBT = 1e-6;
    decimal.decimals = MAX_DECIMALS;
    while (decimal.decimals > 0 && number >= BOUNDS[MAX_DECIMALS - decimal.decimals]) {
        --decimal.decimals;
    }
    const double scaled = number * POWERS_OF_TEN[decimal.decimals];
    decimal.digits = static_cast<std::uint32_t>(scaled);
    const double rest = scaled - decimal.digits;
    if (std::fabs(rest - 0.5) >= DOUBT) {
        decimal.digits += rest > 0.5 ? 1 : 0;
    } else if (rest == 0.5 && hasExactProducts(number)) {
        decimal.digits += decimal.digits % 2; // Ties round to even.
    } else {
        return false;
    }
    return decimal.digits < POWERS_OF_TEN[DIGITS];
}

[[gnu::always_inline]] inline char* writeDecimal(char* text, Decimal decimal) {
    while (decimal.decimals > 0 && decimal.digits % 10 == 0) {
        decimal.digits /= 10;
        --decimal.decimals;
    }
    const std::uint32_t unit = POWERS_OF_TEN[decimal.decimals];
    text = std::to_chars(text, text + DIGITS, decimal.digits / unit).ptr;
    if (decimal.decimals == 0) {
        return text;
    }
    *text++ = '.';
    std::uint32_t fraction = decimal.digits % unit;
    for (int i = decimal.decimals; i > 0; --i) {
        text[i - 1] = static_cast<char>('0' + fraction % 10);
        fraction /= 10;
    }
    return text + decimal.decimals;
}

/// For numbers that are short without an exponent. The quotient of two integers exactly representable in the
/// type is the number nearest to the decimal, and no other decimal with so few digits has the same nearest
/// number.
template <typename Float>
char* writeUsual(char* text, Float number) {
    const Float absolute = std::fabs(number);
    Decimal decimal{};
    const bool isShort =
        absolute >= Float{0.001F} && absolute < Float{100000} &&
        toDecimal(static_cast<double>(absolute), decimal) &&
        static_cast<Float>(decimal.digits) / static_cast<Float>(POWERS_OF_TEN[decimal.decimals]) == absolute;
    if (!isShort) {
        return nullptr;
    }
    if (number < 0) {
        *text++ = '-';
    }
    return writeDecimal(text, decimal);
}

template <typename Float>
char* writeShortest(char* text, Float number) {
    char* const end = writeUsual(text, number);
    return end != nullptr ? end : std::to_chars(text, text + SHORTEST_FLOAT_SIZE, number).ptr;
}

} // namespace

// std::to_chars would do, but always uses exact arithmetic and takes more than three times as long (benchmark
// generalFloatByToChars).
char* writeGeneralFloat(char* text, double number) {
    const double absolute = std::fabs(number);
    Decimal decimal{};
    if (absolute >= 0.0001 && absolute < 1000000 && toDecimal(absolute, decimal)) {
        if (number < 0) {
            *text++ = '-';
        }
        return writeDecimal(text, decimal);
    }
    return std::to_chars(text, text + GENERAL_FLOAT_SIZE, number, std::chars_format::general, DIGITS).ptr;
}

char* writeShortestFloat(char* text, double number) {
    return writeShortest(text, number);
}

char* writeShortestFloat(char* text, float number) {
    return writeShortest(text, number);
}

char* writeUsualFloat(char* text, double number) {
    return writeUsual(text, number);
}

char* writeUsualFloat(char* text, float number) {
    return writeUsual(text, number);
}

char* writeNumber(char* text, const TaggedValue& value) noexcept {
    using Kind = TaggedValue::Kind;
    char* const end = text + NUMBER_SIZE;
    switch (value.kind) {
    case Kind::SIGNED:
        return std::to_chars(text, end, value.signedNumber).ptr;
    case Kind::UNSIGNED:
        return std::to_chars(text, end, value.unsignedNumber).ptr;
    case Kind::DOUBLE:
        return writeShortestFloat(text, value.doubleNumber);
    case Kind::FLOAT:
        return writeShortestFloat(text, value.floatNumber);
    case Kind::CHARACTER:
        *text = value.character;
        return text + 1;
    case Kind::BOOLEAN: {
        const std::string_view word = value.boolean ? "true" : "false";
        return text + word.copy(text, word.size());
    }
    case Kind::TEXT:
    case Kind::C_STRING:
    case Kind::NUMBER:
    case Kind::ADDRESS: // pairs contain none
        break;
    }
    return text;
}

} // namespace Log
} // namespace ZAV
