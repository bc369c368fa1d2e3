#include "log/layout/LineLayout.h"

#include "log/message/MessageFields.h"
#include "zav-util/TimeText.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ZAV {
namespace Log {

// A line is written into space for its longest possible form, which is then cut to its length: appending
// field by field would check the capacity each time.

namespace {

using Util::TimeUtils::TIME_LENGTH;

constexpr std::size_t NUMBER_LENGTH = 11; // of a 32-bit number with its sign
constexpr std::size_t LEVEL_LENGTH = 7;
constexpr std::size_t SEPARATORS_AND_END_OF_LINE = 6;

std::size_t roomFor(const MessageFields& message) {
    return TIME_LENGTH + message.loggerName.size() + message.file.size() + NUMBER_LENGTH + LEVEL_LENGTH +
           message.text.size() + message.pairsText.size() + SEPARATORS_AND_END_OF_LINE;
}

std::size_t roomFor(const ProcessDescription& process) {
    constexpr std::size_t SEPARATORS = 3;
    return process.program.size() + NUMBER_LENGTH + process.host.size() + SEPARATORS;
}

/// Constructing a string in its size costs less than growing an empty one.
/// \return the start of the new space, at the end of the text
char* makeRoom(std::string& text, std::size_t size) {
    const std::size_t begin = text.size();
    if (text.capacity() < size && text.empty()) {
        text = std::string(size, '\0');
    } else {
        text.resize(begin + size);
    }
    return &text[begin];
}

void cutAt(std::string& text, const char* end) {
    text.resize(static_cast<std::size_t>(end - text.data()));
}

char* writeField(char* position, std::string_view field) {
    *position++ = ' ';
    return position + field.copy(position, field.size());
}

char* writeNumber(char* position, std::int32_t number) {
    return std::to_chars(position, position + NUMBER_LENGTH, number).ptr;
}

char* writeLocation(char* position, const MessageFields& message) {
    const bool hasLine = message.line > 0;
    if (!message.file.empty() || hasLine) {
        position = writeField(position, message.file);
    }
    if (hasLine) {
        *position++ = ':';
        position = writeNumber(position, message.line);
    }
    return position;
}

char* writeProcess(char* position, const ProcessDescription& process) {
    position = writeField(position, process.program);
    *position++ = ' ';
    return writeField(writeNumber(position, process.id), process.host);
}

char* writeMessage(char* position, const MessageFields& message) {
    position = writeField(position, message.loggerName);
    if (message.type == LOG) {
        position = writeLocation(position, message);
        position = writeField(position, Level::toString(message.level));
    }
    position = writeField(position, message.text);
    return position + message.pairsText.copy(position, message.pairsText.size());
}

} // namespace

void appendLogLine(std::string& text, const MessageFields& message) {
    char* const position = Util::TimeUtils::writeTime(makeRoom(text, roomFor(message)), message.time);
    cutAt(text, writeMessage(position, message));
}

void appendLogLineWithProcess(std::string& text, const MessageFields& message) {
    const ProcessDescription process = describeProcess(message.time);
    char* const room = makeRoom(text, roomFor(message) + roomFor(process));
    char* const position = writeProcess(Util::TimeUtils::writeTime(room, message.time), process);
    cutAt(text, writeMessage(position, message));
}

} // namespace Log
} // namespace ZAV
