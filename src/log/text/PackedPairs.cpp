#include "log/text/PackedPairs.h"

#include "log/text/ValueText.h"
#include "zav-util/Utf8.h"

#include <algorithm>

namespace ZAV {
namespace Log {

namespace {

constexpr bool isKeyCharacter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '_' || character == '.' || character == '-';
}

/// A table, since it is used for every byte of every logged key.
struct KeyCharacters {
    constexpr KeyCharacters() {
        for (unsigned code = 0; code < 256; ++code) {
            const char character = static_cast<char>(code);
            logged[code] = isKeyCharacter(character) ? character : '_';
        }
    }
    char logged[256] = {};
};

constexpr KeyCharacters KEY_CHARACTERS;

/// \return the size of a text's first character if it must be escaped byte by byte, otherwise 0. That applies to
///         characters that end a line or change how the text around them is displayed.
std::size_t sizeOfControl(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80) {
        return first < 0x20 || first == 0x7f ? 1 : 0;
    }
    const Util::CodePoint character = Util::firstCodePoint(text);
    return character.size > 1 && Util::affectsTerminalDisplay(character.value) ? character.size : 0;
}

/// A table, since it is used for every byte of every text logged as a value.
struct QuotedBytes {
    constexpr QuotedBytes() {
        for (unsigned code = 0; code < 256; ++code) {
            const char character = static_cast<char>(code);
            maybe[code] =
                code <= 0x20 || code >= 0x7f || character == '"' || character == '=' || character == '\\';
        }
    }
    bool maybe[256] = {};
};

constexpr QuotedBytes QUOTED_BYTES;

bool needsQuotes(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (QUOTED_BYTES.maybe[byte] && (byte < 0x80 || sizeOfControl(text.substr(i)) != 0)) {
            return true;
        }
    }
    return text.empty();
}

/// \return whether a value needs quotes; numbers and booleans are only a few letters and digits
bool isQuoted(const TaggedValue& value) {
    if (value.kind == TaggedValue::Kind::CHARACTER) {
        return needsQuotes({&value.character, 1});
    }
    return isText(value) && value.kind != TaggedValue::Kind::NUMBER && needsQuotes({value.text, value.size});
}

/// Collects short pairs and appends them to a string at once: appending each part would take longer than
/// formatting it.
class ShortPairs {
public:
    explicit ShortPairs(std::string& text) : text_(text) {}

    /// \return false if there is no room; there may be after `flush`
    bool add(const Pair& pair, bool needsBlank) {
        const TaggedValue& value = pair.value;
        const std::size_t mostBytes = pair.key.size() + 2 + (isText(value) ? value.size : NUMBER_SIZE);
        if (mostBytes > static_cast<std::size_t>(pairs_ + sizeof pairs_ - next_)) {
            return false;
        }
        if (needsBlank) {
            *next_++ = ' ';
        }
        next_ += pair.key.copy(next_, pair.key.size());
        *next_++ = '=';
        next_ = isText(value) ? next_ + std::string_view(value.text, value.size).copy(next_, value.size)
                              : writeNumber(next_, value);
        return true;
    }

    void flush() {
        text_.append(pairs_, static_cast<std::size_t>(next_ - pairs_));
        next_ = pairs_;
    }

private:
    std::string& text_;
    char pairs_[256];
    char* next_ = pairs_;
};

/// Appends the first character of a text in quotes.
/// \return its size
std::size_t appendFirstQuoted(std::string& quoted, std::string_view text) {
    switch (text[0]) {
    case '"':
        quoted += "\\\"";
        return 1;
    case '\\':
        quoted += "\\\\";
        return 1;
    case '\n':
        quoted += "\\n";
        return 1;
    case '\r':
        quoted += "\\r";
        return 1;
    case '\t':
        quoted += "\\t";
        return 1;
    default:
        break;
    }
    const std::size_t size = sizeOfControl(text);
    for (std::size_t i = 0; i < size; ++i) {
        Util::appendByteEscape(quoted, text[i]);
    }
    if (size == 0) {
        quoted += text[0];
    }
    return size == 0 ? 1 : size;
}

} // namespace

char* packPair(char* place, std::string_view key, const TaggedValue& value) noexcept {
    const std::string_view name = key.empty() ? std::string_view("_") : key;
    char* character = Packing::writeNumber(place, TaggedValue::Kind::TEXT, name.size());
    for (const char byte : name) {
        *character++ = KEY_CHARACTERS.logged[static_cast<unsigned char>(byte)];
    }
    return packValue(character, value);
}

void appendPair(std::string& text, const Pair& pair) {
    const ValueText value(pair.value);
    text.append(pair.key);
    text += '=';
    if (!isQuoted(pair.value)) {
        text.append(value.view());
        return;
    }
    text += '"';
    for (std::string_view rest = value.view(); !rest.empty();) {
        rest.remove_prefix(appendFirstQuoted(text, rest));
    }
    text += '"';
}

void appendPairs(std::string& text, std::string_view packed, bool isTextEmpty) {
    ShortPairs shortPairs(text);
    bool needsBlank = !isTextEmpty;
    forEachPair(packed, [&](const Pair& pair) {
        if (isQuoted(pair.value) || !shortPairs.add(pair, needsBlank)) {
            shortPairs.flush();
            text.append(needsBlank ? " " : "");
            appendPair(text, pair);
        }
        needsBlank = true;
    });
    shortPairs.flush();
}

std::vector<std::pair<std::string, std::string>> listPairs(std::string_view packed, bool hidesEarlier) {
    std::vector<std::pair<std::string, std::string>> pairs;
    const auto add = [&pairs](const Pair& pair) {
        pairs.emplace_back(pair.key, ValueText(pair.value).view());
    };
    if (hidesEarlier) {
        forEachLastPair(packed, add);
    } else {
        forEachPair(packed, add);
    }
    return pairs;
}

// Validation of untrusted bytes

namespace {

/// Removes bytes from the front.
/// \return false if there are not that many
bool take(std::string_view& bytes, std::uint64_t size) noexcept {
    if (size > bytes.size()) {
        return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(size));
    return true;
}

/// \param sizeOfLength how many bytes the text's length takes
bool takeText(std::string_view& bytes, unsigned sizeOfLength, bool isCString) noexcept {
    const char* next = bytes.data();
    if (sizeOfLength > sizeof(std::uint64_t) || !take(bytes, sizeOfLength)) {
        return false;
    }
    const std::uint64_t length = Packing::readNumber(next, sizeOfLength);
    return take(bytes, length) && (!isCString || (length > 0 && *(bytes.data() - 1) == '\0'));
}

/// Removes a packed value from the front.
/// \return false if there is no valid one
bool takeValue(std::string_view& bytes, TaggedValue::Kind& kind) noexcept {
    using Kind = TaggedValue::Kind;
    if (bytes.empty()) {
        return false;
    }
    const unsigned head = static_cast<unsigned char>(bytes.front());
    const unsigned sizeOfNumber = head >> Packing::KIND_BITS;
    bytes.remove_prefix(1);
    kind = static_cast<Kind>(head & Packing::KIND_MASK);
    switch (kind) {
    case Kind::DOUBLE:
        return take(bytes, sizeof(double));
    case Kind::FLOAT:
        return take(bytes, sizeof(float));
    case Kind::CHARACTER:
        return take(bytes, sizeof(char));
    case Kind::ADDRESS:
        return take(bytes, sizeof(const void*));
    case Kind::SIGNED:
    case Kind::UNSIGNED:
    case Kind::BOOLEAN:
        return sizeOfNumber <= sizeof(std::uint64_t) && take(bytes, sizeOfNumber);
    case Kind::C_STRING:
        return sizeOfNumber == Packing::NULL_TEXT || takeText(bytes, sizeOfNumber, true);
    case Kind::TEXT:
    case Kind::NUMBER:
        return takeText(bytes, sizeOfNumber, false);
    }
    return false;
}

} // namespace

bool arePackedValues(std::string_view bytes) noexcept {
    TaggedValue::Kind kind;
    while (!bytes.empty()) {
        if (!takeValue(bytes, kind)) {
            return false;
        }
    }
    return true;
}

namespace {

bool isKey(const TaggedValue& value) noexcept {
    const std::string_view key(value.text, value.size);
    return std::all_of(key.begin(), key.end(), isKeyCharacter) && !key.empty();
}

/// \return whether a text contains only characters of a number, so that it is safe to write unquoted
bool looksLikeNumber(const TaggedValue& value) noexcept {
    const std::string_view text(value.text, value.size);
    return text.find_first_not_of("+-.0123456789eE") == std::string_view::npos &&
           text.find_first_of("0123456789") != std::string_view::npos;
}

} // namespace

bool arePackedPairs(std::string_view bytes) noexcept {
    using Kind = TaggedValue::Kind;
    Kind kind;
    while (!bytes.empty()) {
        const char* key = bytes.data();
        if (!takeValue(bytes, kind) || kind != Kind::TEXT || !isKey(unpackValue(key))) {
            return false;
        }
        const char* value = bytes.data();
        if (!takeValue(bytes, kind) || kind == Kind::C_STRING || kind == Kind::ADDRESS ||
            (kind == Kind::NUMBER && !looksLikeNumber(unpackValue(value)))) {
            return false;
        }
    }
    return true;
}

} // namespace Log
} // namespace ZAV
