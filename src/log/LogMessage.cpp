// Messages, and the small types that they are made of.

#include "log/LogMessage.h"

#include "log/Level.h"
#include "log/LogException.h"
#include "log/MessageFilter.h"
#include "log/MessageType.h"
#include "log/text/PackedPairs.h"
#include "platform/Process.h"

#include <array>
#include <utility>

namespace ZAV {
namespace Log {

namespace Level {

namespace {

struct NamedLevel {
    LogLevel level;
    std::string name;
};

struct NamedLevels : Platform::NeverDestroyed<NamedLevels> {
    const std::array<NamedLevel, 6> all{{{LEVEL_AUDIT, "AUDIT"},
                                         {LEVEL_ERROR, "ERROR"},
                                         {LEVEL_WARNING, "WARNING"},
                                         {LEVEL_INFO, "INFO"},
                                         {LEVEL_DEBUG, "DEBUG"},
                                         {LEVEL_TRACE, "TRACE"}}};
};

const NamedLevels& madeAtLoad = NamedLevels::instance();

constexpr std::size_t INDEX_OF_ERROR = 1;

} // namespace

const std::string& toString(LogLevel level) {
    for (const NamedLevel& named : NamedLevels::instance().all) {
        if (named.level == level) {
            return named.name;
        }
    }
    return NamedLevels::instance().all[INDEX_OF_ERROR].name;
}

LogLevel fromString(const std::string& name) {
    for (const NamedLevel& named : NamedLevels::instance().all) {
        if (named.name == name) {
            return named.level;
        }
    }
    throw LogException("There is no '" + name + "' LogLevel defined.");
}

} // namespace Level

MessageType messageTypeFromString(const std::string& name) {
    if (name == "LOG") {
        return LOG;
    }
    if (name == "CFG") {
        return CFG;
    }
    throw LogException("There is no '" + name + "' MessageType defined.");
}

LogException::LogException(const std::string& message) : std::runtime_error(message) {}

LogException::~LogException() = default;

LogMessage::LogMessage(std::string loggerName, Util::TimeUtils::Time time, Level::LogLevel level,
                       std::string text, int line, std::string file, MessageType type)
    : loggerName_(std::move(loggerName)), time_(time), level_(level), text_(std::move(text)), line_(line),
      file_(std::move(file)), type_(type), messageSize_(text_.size()) {}

LogMessage::Pairs LogMessage::getValues() const {
    return listPairs(values_, false);
}

LogMessage::Pairs LogMessage::getContext() const {
    return listPairs(context_, true);
}

MessageFilter::~MessageFilter() = default;

} // namespace Log
} // namespace ZAV
