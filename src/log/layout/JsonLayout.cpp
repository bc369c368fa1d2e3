#include "log/layout/LineLayout.h"

#include "log/message/MessageFields.h"
#include "log/text/JsonText.h"
#include "log/text/PackedPairs.h"
#include "log/text/ValueText.h"
#include "zav-util/TimeText.h"

#include <charconv>
#include <cmath>

namespace ZAV {
namespace Log {

namespace {

template <typename Number>
void appendNumber(std::string& line, Number number) {
    char digits[24];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    line.append(digits, static_cast<std::size_t>(end - digits));
}

/// \return whether the value's text is a JSON number or boolean, which is written unquoted
bool isWritten(const TaggedValue& value) {
    switch (value.kind) {
    case TaggedValue::Kind::SIGNED:
    case TaggedValue::Kind::UNSIGNED:
    case TaggedValue::Kind::BOOLEAN:
    case TaggedValue::Kind::NUMBER:
        return true;
    case TaggedValue::Kind::DOUBLE:
        return std::isfinite(value.doubleNumber);
    case TaggedValue::Kind::FLOAT:
        return std::isfinite(value.floatNumber);
    default:
        return false;
    }
}

void appendPairs(std::string& line, std::string_view name, std::string_view packed) {
    if (packed.empty()) {
        return;
    }
    line.append(name);
    char separator = '{';
    forEachLastPair(packed, [&](const Pair& pair) {
        line += separator;
        separator = ',';
        line += '"';
        line.append(pair.key); // whose characters need no escape
        line += "\":";
        const ValueText value(pair.value);
        if (isWritten(pair.value)) {
            line.append(value.view());
        } else {
            appendJsonText(line, value.view());
        }
    });
    line += '}';
}

void appendKind(std::string& line, const MessageFields& message) {
    if (message.type == CFG) {
        line += ",\"type\":\"CFG\"";
        return;
    }
    line += ",\"type\":\"LOG\",\"level\":";
    appendJsonText(line, Level::toString(message.level));
}

void appendPlace(std::string& line, const MessageFields& message) {
    if (!message.file.empty()) {
        line += ",\"file\":";
        appendJsonText(line, message.file);
    }
    if (message.line > 0) {
        line += ",\"line\":";
        appendNumber(line, message.line);
    }
}

} // namespace

void JsonLayout::append(std::string& line, const MessageFields& message) const {
    constexpr std::size_t USUAL_SIZE = 256;
    line.reserve(line.size() + USUAL_SIZE + message.text.size() + 2 * message.pairsText.size());
    char time[Util::TimeUtils::UTC_LENGTH];
    line += "{\"time\":\"";
    line.append(time, static_cast<std::size_t>(Util::TimeUtils::writeUtc(time, message.time) - time));
    line += "\",\"logger\":";
    appendJsonText(line, message.loggerName);
    appendKind(line, message);
    appendPlace(line, message);
    line += ",\"thread\":";
    appendNumber(line, message.thread);
    line += ",\"text\":";
    appendJsonText(line, message.text);
    appendPairs(line, ",\"values\":", message.values);
    appendPairs(line, ",\"context\":", message.context);
    line += '}';
}

} // namespace Log
} // namespace ZAV
