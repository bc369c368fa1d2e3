#pragma once

#include "log/Level.h"
#include "log/MessageType.h"
#include "log/config/ValueReaders.h"
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

/// The values of the keys "appender.<name>.*" of one appender. Only the table of keys defines their meanings
/// and defaults.
struct AppenderValues {
    /// Sets every value to its default.
    /// \param reader the bit of `KeyReaders` of the appender's class; 0 if it does not matter
    explicit AppenderValues(const std::string& appenderName, unsigned reader = 0);

    /// Reads the values of a configuration, in the order of the table.
    /// \param reader the bit of `KeyReaders` of the appender's class, whose keys are read and no others
    /// \throw LogException for the first value that is rejected
    AppenderValues(const std::string& appenderName, unsigned reader, const Util::Properties& properties);

    /// \throw LogException if the layout is `FIELDS` and no column is named
    void requireColumns() const;

    /// Reads the value of one key, if the properties have that and the key that it needs.
    /// \throw LogException if the value is rejected
    void read(const ConfigurationKey& key, const Util::Properties& properties);

    /// \return the rules for opening and creating files
    Platform::FileRules fileRules() const { return {fileMode, followLinks}; }

    /// \param byDefault the layout of the appender's class
    /// \return the layout of its lines
    std::shared_ptr<const LineLayout> layoutOr(LayoutName byDefault) const {
        return makeLayout(layout.value_or(byDefault), columns, escape);
    }

    std::string name;

    bool asynchronous = false;
    std::optional<std::vector<std::string>> prefixes; ///< of logger names; all loggers if unset
    std::optional<Level::LogLevel> level;
    std::optional<Util::TimeUtils::Time> expiration; ///< 0: a level lowered by a command stays lowered
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
    Util::TimeUtils::Time recovery;        ///< how often a live file is checked; 0: never
    std::optional<unsigned> fileMode;      ///< the permissions of new files
    bool followLinks = true;
    bool writesBatches = false; ///< whether the lines of one consumer round are one write

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
