#include "log/Level.h"

#include "log/LogException.h"

#include <array>

namespace ZAV {
namespace Log {
namespace Level {

namespace {

struct NamedLevel {
    LogLevel level;
    std::string name;
};

using NamedLevels = std::array<NamedLevel, 6>;

/// Never destroyed, since threads may still log while the process ends.
const NamedLevels& namedLevels() {
    static const NamedLevels& levels = *new NamedLevels{{{LEVEL_AUDIT, "AUDIT"},
                                                         {LEVEL_ERROR, "ERROR"},
                                                         {LEVEL_WARNING, "WARNING"},
                                                         {LEVEL_INFO, "INFO"},
                                                         {LEVEL_DEBUG, "DEBUG"},
                                                         {LEVEL_TRACE, "TRACE"}}};
    return levels;
}

/// So that no thread makes them while another one forks.
const NamedLevels& madeAtLoad = namedLevels();

constexpr std::size_t INDEX_OF_ERROR = 1;

} // namespace

const std::string& toString(LogLevel level) {
    for (const NamedLevel& named : namedLevels()) {
        if (named.level == level) {
            return named.name;
        }
    }
    return namedLevels()[INDEX_OF_ERROR].name;
}

LogLevel fromString(const std::string& name) {
    for (const NamedLevel& named : namedLevels()) {
        if (named.name == name) {
            return named.level;
        }
    }
    throw LogException("There is no '" + name + "' LogLevel defined.");
}

} // namespace Level
} // namespace Log
} // namespace ZAV
