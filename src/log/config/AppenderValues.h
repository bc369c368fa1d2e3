#pragma once

#include "log/Level.h"
#include "log/MessageType.h"
#include "log/layout/LineLayout.h"
#include "platform/OpenFiles.h"
#include "zav-util/TimeUtils.h"

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

struct ConfigurationKey;

/// When a file is rolled whatever its size, in local time.
enum class RollMoment { NEVER, HOUR, MIDNIGHT };

/// What the keys "appender.<name>.*" of one appender say. What a key means, and what holds without it, stands
/// in the table of keys alone.
struct AppenderValues {
    /// Every value as it is without its key.
    /// \param reader the bit of `KeyReaders` of the appender's class; 0 if that makes no difference
    explicit AppenderValues(const std::string& appenderName, unsigned reader = 0);

    /// The values of a configuration, read in the order of the table.
    /// \param reader the bit of `KeyReaders` of the appender's class, whose keys are read and no others
    /// \throw LogException for the first value that is rejected
    AppenderValues(const std::string& appenderName, unsigned reader, const Util::Properties& properties);

    /// \throw LogException if the layout shows columns and none is named
    void requireColumns() const;

    /// Takes the value of one key, if the properties have it and the key that it needs.
    /// \throw LogException if the value is rejected
    void read(const ConfigurationKey& key, const Util::Properties& properties);

    /// \return how files are found and made
    Platform::FileRules fileRules() const { return {fileMode, followLinks}; }

    /// \param byDefault the layout of the appender's class
    /// \return how its lines are made
    std::shared_ptr<const LineLayout> layoutOr(LayoutName byDefault) const {
        return makeLayout(layout.value_or(byDefault), columns, escape);
    }

    std::string name;

    bool asynchronous = false;
    std::optional<std::vector<std::string>> prefixes; ///< of the names of loggers; all loggers without it
    std::optional<Level::LogLevel> level;
    std::optional<Util::TimeUtils::Time> expiration; ///< 0: a level that a command lowers stays so
    std::optional<MessageType> messageType;
    bool escape = false; ///< whether each message is kept on one line
    std::optional<LayoutName> layout;
    std::vector<Column> columns; ///< of the layout `FIELDS`

    std::ostream* stream = nullptr; ///< one of the standard streams

    std::string dir;
    std::string file;
    std::uint64_t fileNumber = 0;          ///< how many older files are kept
    std::uint64_t fileMaxSize = 0;         ///< bytes
    Util::TimeUtils::Time fileMaxLifetime; ///< 0: for ever
    Util::TimeUtils::Time recovery;        ///< how often a live file is looked after; 0: never
    std::optional<unsigned> fileMode;      ///< the permissions of a file that is made
    bool followLinks = true;
    bool writesBatches = false; ///< whether the lines of a round of the consumer are one write

    // Of a `RollingFileAppender`; 0: no limit
    std::uint64_t rollSize = 0; ///< bytes
    RollMoment rollAt = RollMoment::NEVER;
    std::uint64_t keepFiles = 0;
    std::uint64_t keepSize = 0; ///< bytes
    Util::TimeUtils::Time keepTime;
    bool packs = false;
};

} // namespace Log
} // namespace ZAV
