#include "log/text/MessageText.h"

#include "log/text/PackedValues.h"
#include "log/text/ValueText.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace ZAV {
namespace Log {

namespace {

template <typename Value>
void useStream(MessageText& text, Value value) {
    text.stream() << value;
    text.settle();
}

template <typename Integer>
void appendInteger(MessageText& text, Integer value) {
    if (!text.takesNumbers()) {
        useStream(text, value);
        return;
    }
    constexpr std::size_t SIZE = std::numeric_limits<Integer>::digits10 + 2;
    char* const place = text.room(SIZE);
    text.commit(std::to_chars(place, place + SIZE, value).ptr);
}

/// The stream macros pack a C string as a text and a float as a double; these kinds get here only if values
/// packed for a format have lost it.
void appendStreamed(MessageText& text, const TaggedValue& value) {
    switch (value.kind) {
    case TaggedValue::Kind::TEXT:
    case TaggedValue::Kind::NUMBER:
        return appendStreamed(text, std::string_view(value.text, value.size));
    case TaggedValue::Kind::SIGNED:
        return appendStreamed(text, value.signedNumber);
    case TaggedValue::Kind::UNSIGNED:
        return appendStreamed(text, value.unsignedNumber);
    case TaggedValue::Kind::DOUBLE:
        return appendStreamed(text, value.doubleNumber);
    case TaggedValue::Kind::CHARACTER:
        return appendStreamed(text, value.character);
    case TaggedValue::Kind::BOOLEAN:
        return appendStreamed(text, value.boolean);
    case TaggedValue::Kind::ADDRESS:
        return appendStreamed(text, value.address);
    case TaggedValue::Kind::C_STRING:
        return appendStreamed(text, std::string_view(value.text == nullptr ? "(null)" : value.text));
    case TaggedValue::Kind::FLOAT:
        return appendStreamed(text, static_cast<double>(value.floatNumber));
    }
}

} // namespace

void appendStreamed(MessageText& text, std::string_view value) {
    if (text.takesTexts()) {
        text.append(value);
    } else {
        useStream(text, value);
    }
}

void appendStreamed(MessageText& text, char value) {
    if (text.takesTexts()) {
        text.append(std::string_view(&value, 1));
    } else {
        useStream(text, value);
    }
}

void appendStreamed(MessageText& text, bool value) {
    if (text.takesNumbers()) {
        text.append(value ? "1" : "0");
    } else {
        useStream(text, value);
    }
}

void appendStreamed(MessageText& text, short value) {
    appendInteger(text, value);
}

void appendStreamed(MessageText& text, unsigned short value) {
    appendInteger(text, value);
}

void appendStreamed(MessageText& text, int value) {
    appendInteger(text, value);
}

void appendStreamed(MessageText& text, unsigned value) {
    appendInteger(text, value);
}

void appendStreamed(MessageText& text, long value) {
    appendInteger(text, value);
}

void appendStreamed(MessageText& text, unsigned long value) {
    appendInteger(text, value);
}

void appendStreamed(MessageText& text, long long value) {
    appendInteger(text, value);
}

void appendStreamed(MessageText& text, unsigned long long value) {
    appendInteger(text, value);
}

/// Systems differ in whether they show the sign of a NaN.
void appendStreamed(MessageText& text, double value) {
    if (text.takesNumbers() && !std::isnan(value)) {
        text.commit(writeGeneralFloat(text.room(GENERAL_FLOAT_SIZE), value));
    } else {
        useStream(text, value);
    }
}

/// Rarely logged, and every conversion without a stream depends on the C locale.
void appendStreamed(MessageText& text, long double value) {
    useStream(text, value);
}

void appendStreamed(MessageText& text, const void* value) {
    if (value == nullptr || !text.takesNumbers()) {
        useStream(text, value);
        return;
    }
    constexpr std::size_t SIZE = 2 + 2 * sizeof value;
    char* const place = text.room(SIZE);
    place[0] = '0';
    place[1] = 'x';
    text.commit(std::to_chars(place + 2, place + SIZE, reinterpret_cast<std::uintptr_t>(value), 16).ptr);
}

void appendStreamedValues(MessageText& text, std::string_view packed) {
    const char* next = packed.data();
    const char* const end = next + packed.size();
    while (next != end) {
        appendStreamed(text, unpackValue(next));
    }
}

} // namespace Log
} // namespace ZAV
