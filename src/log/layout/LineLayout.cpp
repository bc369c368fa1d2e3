#include "log/layout/LineLayout.h"

#include "log/message/MessageFields.h"
#include "platform/Process.h"
#include "zav-util/SystemInformation.h"
#include "zav-util/TimeText.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ZAV {
namespace Log {

// A line is written into room for its longest possible form and then cut to its length: a string that grew
// field by field would check its capacity each time.

namespace {

using Util::TimeUtils::TIME_LENGTH;

constexpr std::size_t NUMBER_LENGTH = 11; // of a 32-bit number with its sign
constexpr std::size_t LEVEL_LENGTH = 7;
constexpr std::size_t SEPARATORS_AND_END_OF_LINE = 6;

std::size_t roomFor(const MessageFields& message) {
    return TIME_LENGTH + message.loggerName.size() + message.file.size() + NUMBER_LENGTH + LEVEL_LENGTH +
           message.text.size() + SEPARATORS_AND_END_OF_LINE;
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

char* writeMessage(char* position, const MessageFields& message) {
    position = writeField(position, message.loggerName);
    if (message.type == LOG) {
        position = writeLocation(position, message);
        position = writeField(position, Level::toString(message.level));
    }
    return writeField(position, message.text);
}

/// The name cannot change, and asking the system for it costs as much as opening a file. It is never
/// destroyed, since threads may still log while the process ends.
const std::string& programName() {
    static const std::string& name = *new std::string(Util::getProgramName());
    return name;
}

/// So that no thread makes it while another one forks.
const std::string& madeAtLoad = programName();

/// The host's name, as a thread last read it.
struct KnownHost {
    std::uint64_t second; ///< of the message it was read for, since 1970; 0 if it was never read
    std::size_t length;
    char name[256];
};

thread_local KnownHost knownHost{};

/// The host may be renamed while the program runs, but reading its name costs a good part of what a whole
/// line costs, so it is read once a second.
std::string_view hostName(const MessageFields& message) {
    KnownHost& host = knownHost;
    const std::uint64_t second = message.time.microseconds() / 1000000;
    if (host.second != second || second == 0) {
        const std::string name = Util::getHostName();
        host.length = name.copy(host.name, sizeof host.name);
        host.second = second;
    }
    return std::string_view(host.name, host.length);
}

/// The process id is read every time, since it changes in a process that forks.
std::string describeProcess(const MessageFields& message) {
    char id[NUMBER_LENGTH];
    const char* const idEnd = writeNumber(id, Platform::processId());
    std::string process = programName();
    process.append(1, ' ')
        .append(static_cast<const char*>(id), idEnd)
        .append(1, ' ')
        .append(hostName(message));
    return process;
}

} // namespace

void appendLogLine(std::string& text, const MessageFields& message) {
    const std::size_t begin = text.size();
    text.resize(begin + roomFor(message));
    char* position = Util::TimeUtils::writeTime(&text[begin], message.time);
    position = writeMessage(position, message);
    text.resize(static_cast<std::size_t>(position - text.data()));
}

void appendLogLineWithProcess(std::string& text, const MessageFields& message) {
    const std::string process = describeProcess(message);
    const std::size_t begin = text.size();
    text.resize(begin + roomFor(message) + process.size() + 1);
    char* position = Util::TimeUtils::writeTime(&text[begin], message.time);
    position = writeMessage(writeField(position, process), message);
    text.resize(static_cast<std::size_t>(position - text.data()));
}

} // namespace Log
} // namespace ZAV
