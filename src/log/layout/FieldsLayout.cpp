#include "log/layout/LineLayout.h"

#include "log/message/MessageFields.h"
#include "log/text/PackedPairs.h"
#include "zav-util/TimeText.h"

#include <charconv>
#include <cstddef>

namespace ZAV {
namespace Log {

namespace {

template <typename Number>
void appendNumber(std::string& line, Number number) {
    char digits[24];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    line.append(digits, static_cast<std::size_t>(end - digits));
}

void appendTime(std::string& line, Util::TimeUtils::Time time) {
    char field[Util::TimeUtils::TIME_LENGTH];
    line.append(field, static_cast<std::size_t>(Util::TimeUtils::writeTime(field, time) - field));
}

void appendUtc(std::string& line, Util::TimeUtils::Time time) {
    char field[Util::TimeUtils::UTC_LENGTH];
    line.append(field, static_cast<std::size_t>(Util::TimeUtils::writeUtc(field, time) - field));
}

void appendPlace(std::string& line, const MessageFields& message) {
    line.append(message.file);
    if (message.line > 0) {
        line += ':';
        appendNumber(line, message.line);
    } else if (message.file.empty()) {
        line += '-';
    }
}

void appendContext(std::string& line, std::string_view packed) {
    bool isFirst = true;
    forEachLastPair(packed, [&](const Pair& pair) {
        if (!isFirst) {
            line += ' ';
        }
        isFirst = false;
        appendPair(line, pair);
    });
}

/// If the text is not empty, `pairsText` begins with a space.
void appendValues(std::string& line, const MessageFields& message) {
    line.append(message.pairsText.substr(message.text.empty() || message.pairsText.empty() ? 0 : 1));
}

void appendColumn(std::string& line, Column column, const MessageFields& message) {
    switch (column) {
    case Column::TIME:
        return appendTime(line, message.time);
    case Column::UTC:
        return appendUtc(line, message.time);
    case Column::LEVEL:
        line.append(message.type == CFG ? std::string_view("-") : Level::toString(message.level));
        return;
    case Column::LOGGER:
        line.append(message.loggerName);
        return;
    case Column::THREAD:
        return appendNumber(line, message.thread);
    case Column::PROCESS:
        line.append(describeProcess(message.time).program);
        return;
    case Column::PID:
        return appendNumber(line, describeProcess(message.time).id);
    case Column::HOST:
        line.append(describeProcess(message.time).host);
        return;
    case Column::PLACE:
        return appendPlace(line, message);
    case Column::CONTEXT:
        return appendContext(line, message.context);
    case Column::VALUES:
        return appendValues(line, message);
    case Column::MESSAGE:
        line.append(message.text);
        return;
    case Column::TEXT:
        line.append(message.text).append(message.pairsText);
        return;
    }
}

bool mayBeAbsent(Column column) {
    return column == Column::CONTEXT || column == Column::VALUES;
}

} // namespace

void FieldsLayout::append(std::string& line, const MessageFields& message) const {
    constexpr std::size_t USUAL_SIZE = 128;
    line.reserve(line.size() + USUAL_SIZE + message.text.size() + message.pairsText.size());
    bool isFirst = true;
    for (const Column column : columns_) {
        const std::size_t end = line.size();
        if (!isFirst) {
            line += ' ';
        }
        const std::size_t begin = line.size();
        appendColumn(line, column, message);
        if (line.size() == begin && mayBeAbsent(column)) {
            line.resize(end);
        } else {
            isFirst = false;
        }
    }
}

} // namespace Log
} // namespace ZAV
