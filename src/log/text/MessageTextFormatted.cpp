#include "log/text/MessageText.h"

#include "log/text/PackedValues.h"
#include "log/text/ValueText.h"

#include <fmt/compile.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <exception>
#include <limits>
#include <new>
#include <string>
#include <vector>

namespace ZAV {
namespace Log {

namespace {

/// \return the function's result for the value in its original type
template <typename Function>
auto withUntagged(const TaggedValue& value, const Function& function) {
    switch (value.kind) {
    case TaggedValue::Kind::TEXT:
    case TaggedValue::Kind::NUMBER:
        return function(std::string_view(value.text, value.size));
    case TaggedValue::Kind::C_STRING:
        return function(value.text);
    case TaggedValue::Kind::SIGNED:
        return function(value.signedNumber);
    case TaggedValue::Kind::UNSIGNED:
        return function(value.unsignedNumber);
    case TaggedValue::Kind::DOUBLE:
        return function(value.doubleNumber);
    case TaggedValue::Kind::FLOAT:
        return function(value.floatNumber);
    case TaggedValue::Kind::CHARACTER:
        return function(value.character);
    case TaggedValue::Kind::BOOLEAN:
        return function(value.boolean);
    case TaggedValue::Kind::ADDRESS:
        break;
    }
    return function(value.address);
}

using Argument = fmt::basic_format_arg<fmt::format_context>;

Argument argumentOf(const TaggedValue& value) {
    return withUntagged(value, [](const auto& untagged) {
        const auto store = fmt::make_format_args(untagged);
        return fmt::format_args(store).get(0);
    });
}

/// Formats with {fmt}'s own parser.
void appendByLibrary(MessageText& text, std::string_view format, const TaggedValue* values,
                     std::size_t count) {
    constexpr std::size_t USUAL_COUNT = 16;
    Argument usual[USUAL_COUNT];
    std::vector<Argument> many(count > USUAL_COUNT ? count : 0);
    Argument* const arguments = many.empty() ? usual : many.data();
    for (std::size_t i = 0; i < count; ++i) {
        arguments[i] = argumentOf(values[i]);
    }
    fmt::memory_buffer buffer;
    fmt::vformat_to(fmt::appender(buffer), format, fmt::format_args(arguments, static_cast<int>(count)));
    text.append({buffer.data(), buffer.size()});
}

bool isNullText(const TaggedValue& value) {
    return value.kind == TaggedValue::Kind::C_STRING && value.text == nullptr;
}

/// \param form the part of a field after the colon, including the closing brace; not the brace alone
void appendField(MessageText& text, std::string_view form, const TaggedValue& value) {
    if (isNullText(value) && form[form.size() - 2] != 'p') {
        appendByLibrary(text, "{}", &value,
                        1); // throws; a formatter would dereference the null
    }
    withUntagged(value, [&](const auto& untagged) {
        fmt::formatter<std::decay_t<decltype(untagged)>> formatter;
        fmt::format_parse_context parsed(form);
        formatter.parse(parsed);
        fmt::memory_buffer buffer;
        fmt::format_context context(fmt::appender(buffer), {});
        formatter.format(untagged, context);
        text.append({buffer.data(), buffer.size()});
    });
}

template <typename Integer>
void appendInteger(MessageText& text, Integer number) {
    constexpr std::size_t SIZE = std::numeric_limits<Integer>::digits10 + 2;
    char* const place = text.room(SIZE);
    text.commit(std::to_chars(place, place + SIZE, number).ptr);
}

/// The shortest text that reads back as the same number.
template <typename Float>
void appendFloat(MessageText& text, Float number) {
    constexpr std::size_t SIZE = 32;
    char* const place = text.room(SIZE);
    char* const end = writeUsualFloat(place, number);
    text.commit(end != nullptr ? end : fmt::format_to(place, FMT_COMPILE("{}"), number));
}

void appendAddress(MessageText& text, const void* address) {
    constexpr std::size_t SIZE = 2 * sizeof address;
    text.append("0x");
    char* const place = text.room(SIZE);
    text.commit(std::to_chars(place, place + SIZE, reinterpret_cast<std::uintptr_t>(address), 16).ptr);
}

/// Appends a value as the field "{}" formats it.
void appendPlain(MessageText& text, const TaggedValue& value) {
    switch (value.kind) {
    case TaggedValue::Kind::TEXT:
    case TaggedValue::Kind::NUMBER:
        return text.append({value.text, value.size});
    case TaggedValue::Kind::C_STRING:
        return isNullText(value) ? appendByLibrary(text, "{}", &value, 1) : text.append(value.text);
    case TaggedValue::Kind::SIGNED:
        return appendInteger(text, value.signedNumber);
    case TaggedValue::Kind::UNSIGNED:
        return appendInteger(text, value.unsignedNumber);
    case TaggedValue::Kind::DOUBLE:
        return appendFloat(text, value.doubleNumber);
    case TaggedValue::Kind::FLOAT:
        return appendFloat(text, value.floatNumber);
    case TaggedValue::Kind::CHARACTER:
        return text.append({&value.character, 1});
    case TaggedValue::Kind::BOOLEAN:
        return text.append(value.boolean ? "true" : "false");
    case TaggedValue::Kind::ADDRESS:
        return appendAddress(text, value.address);
    }
}

constexpr std::size_t WORD_SIZE = sizeof(std::uint64_t);

constexpr std::uint64_t inEachByte(unsigned char byte) {
    return byte * 0x0101010101010101U;
}

/// \return the bytes as a number whose lowest byte is the first; on little-endian machines compilers turn this into a
///         plain load
std::uint64_t readWord(const char* text) {
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < WORD_SIZE; ++i) {
        word |= static_cast<std::uint64_t>(static_cast<unsigned char>(text[i])) << 8 * i;
    }
    return word;
}

/// \return a word in which the highest bit of the first byte with that value is set; 0 if there is none. Bits of later
///         bytes may be set as well.
constexpr std::uint64_t findByte(std::uint64_t word, unsigned char byte) {
    const std::uint64_t difference = word ^ inEachByte(byte);
    return (difference - inEachByte(0x01)) & ~difference & inEachByte(0x80);
}

constexpr std::size_t positionOf(std::uint64_t found) {
    const std::uint64_t upToFound = ((found & (~found + 1)) - 1) & inEachByte(0x01);
    return static_cast<std::size_t>(upToFound * inEachByte(0x01) >> 56U) - 1;
}

bool isBrace(char character) {
    return character == '{' || character == '}';
}

/// Appends what comes before the next brace. It is searched and copied at once, word by word: the pieces
/// between fields are so short that C library calls for them would dominate the time.
/// \return the brace, or the end
const char* appendUpToBrace(MessageText& text, const char* next, const char* end) {
    char* place = text.room(static_cast<std::size_t>(end - next) + WORD_SIZE);
    for (; static_cast<std::size_t>(end - next) >= WORD_SIZE; next += WORD_SIZE, place += WORD_SIZE) {
        const std::uint64_t word = readWord(next);
        std::memcpy(place, next, WORD_SIZE);
        const std::uint64_t found = findByte(word, '{') | findByte(word, '}');
        if (found != 0) {
            text.commit(place + positionOf(found));
            return next + positionOf(found);
        }
    }
    while (next != end && !isBrace(*next)) {
        *place++ = *next++;
    }
    text.commit(place);
    return next;
}

std::string_view between(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

} // namespace

// Most formats contain only "{}", and parsing those with {fmt} takes several times as long. A field with a
// format spec is passed to {fmt} by itself; from the first field on that names its argument or refers to
// others, the whole rest is.
void appendFormatted(MessageText& text, std::string_view format, const TaggedValue* values,
                     std::size_t count) {
    const TaggedValue* const valuesEnd = values + count;
    const char* next = format.data();
    const char* const end = next + format.size();
    for (;;) {
        const char* const brace = appendUpToBrace(text, next, end);
        if (brace == end) {
            return;
        }
        const char second = brace + 1 < end ? brace[1] : '\0';
        if (second == *brace) {
            text.append({brace, 1});
            next = brace + 2;
            continue;
        }
        if (second == '}' && values != valuesEnd) {
            appendPlain(text, *values++);
            next = brace + 2;
            continue;
        }
        const char* const fieldEnd = second == ':' ? std::find_if(brace + 2, end, isBrace) : end;
        // A brace right after the colon may be a fill character.
        if (fieldEnd == end || *fieldEnd != '}' || fieldEnd == brace + 2 || values == valuesEnd) {
            appendByLibrary(text, between(brace, end), values, static_cast<std::size_t>(valuesEnd - values));
            return;
        }
        appendField(text, between(brace + 2, fieldEnd + 1), *values++);
        next = fieldEnd + 1;
    }
}

void appendFormattedValues(MessageText& text, std::string_view format, std::string_view packed) {
    constexpr std::size_t USUAL_COUNT = 16;
    TaggedValue usual[USUAL_COUNT];
    std::vector<TaggedValue> many;
    std::size_t count = 0;
    const char* next = packed.data();
    for (const char* const end = next + packed.size(); next != end; ++count) {
        const TaggedValue value = unpackValue(next);
        if (count == USUAL_COUNT && many.empty()) {
            many.assign(usual, usual + count);
        }
        if (count < USUAL_COUNT) {
            usual[count] = value;
        } else {
            many.push_back(value);
        }
    }
    try {
        appendFormatted(text, format, many.empty() ? usual : many.data(), count);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& exception) {
        text.clear();
        showFailure(text, format, exception.what());
    }
}

void showFailure(MessageText& text, std::string_view format, const char* reason) {
    text.append(format);
    text.append(" [not formatted: ");
    text.append(reason != nullptr ? reason : "unknown exception");
    text.append("]");
}

} // namespace Log
} // namespace ZAV
