#include "log/layout/LineLayout.h"

#include "log/LogMessage.h"
#include "platform/Process.h"
#include "zav-util/SystemInformation.h"
#include "zav-util/TimeText.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace ZAV {
namespace Log {

// A line is written into room made for the longest that it can be, and then cut to its length: a string that
// grows field by field looks at its capacity each time.

namespace {

using Util::TimeUtils::TIME_LENGTH;

constexpr std::size_t NUMBER_LENGTH = 11; // of a 32-bit number with its sign
constexpr std::size_t LEVEL_LENGTH = 7;
constexpr std::size_t SEPARATORS_AND_END_OF_LINE = 6;

std::size_t roomFor(const LogMessage& message) {
    return TIME_LENGTH + message.getLoggerName().size() + message.getFile().size() + NUMBER_LENGTH +
           LEVEL_LENGTH + message.getText().size() + SEPARATORS_AND_END_OF_LINE;
}

char* writeField(char* position, std::string_view field) {
    *position++ = ' ';
    std::memcpy(position, field.data(), field.size());
    return position + field.size();
}

char* writeNumber(char* position, std::int32_t number) {
    return std::to_chars(position, position + NUMBER_LENGTH, number).ptr;
}

char* writeLocation(char* position, const LogMessage& message) {
    const bool hasLine = message.getLine() > 0;
    if (!message.getFile().empty() || hasLine) {
        position = writeField(position, message.getFile());
    }
    if (hasLine) {
        *position++ = ':';
        position = writeNumber(position, message.getLine());
    }
    return position;
}

char* writeMessage(char* position, const LogMessage& message) {
    position = writeField(position, message.getLoggerName());
    if (message.getType() == LOG) {
        position = writeLocation(position, message);
        position = writeField(position, Level::toString(message.getLevel()));
    }
    return writeField(position, message.getText());
}

/// The program stays the same, and asking the system for it costs as much as opening a file. Never destroyed,
/// since threads may still log while the process ends.
const std::string& programName() {
    static const std::string& name = *new std::string(Util::getProgramName());
    return name;
}

/// So that no thread makes it while another one forks.
const std::string& madeAtLoad = programName();

/// The host's name as a thread last asked for it.
struct KnownHost {
    std::uint64_t second; ///< since 1970, of the message that it was asked for; 0 before the first one
    std::size_t length;
    char name[256];
};

thread_local KnownHost knownHost{};

/// The host may be renamed while the program runs, but asking for its name costs a good part of what a line
/// does: it is asked for once a second.
std::string_view hostName(const LogMessage& message) {
    KnownHost& host = knownHost;
    const std::uint64_t second = message.getTime().microseconds() / 1000000;
    if (host.second != second || second == 0) {
        const std::string name = Util::getHostName();
        host.length = name.copy(host.name, sizeof host.name);
        host.second = second;
    }
    return std::string_view(host.name, host.length);
}

/// The process's id is asked for every time, since a program that forks gets another.
std::string describeProcess(const LogMessage& message) {
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

void appendLogLine(std::string& text, const LogMessage& message) {
    const std::size_t begin = text.size();
    text.resize(begin + roomFor(message));
    char* position = Util::TimeUtils::writeTime(&text[begin], message.getTime());
    position = writeMessage(position, message);
    text.resize(static_cast<std::size_t>(position - text.data()));
}

void appendLogLineWithProcess(std::string& text, const LogMessage& message) {
    const std::string process = describeProcess(message);
    const std::size_t begin = text.size();
    text.resize(begin + roomFor(message) + process.size() + 1);
    char* position = Util::TimeUtils::writeTime(&text[begin], message.getTime());
    position = writeMessage(writeField(position, process), message);
    text.resize(static_cast<std::size_t>(position - text.data()));
}

} // namespace Log
} // namespace ZAV
