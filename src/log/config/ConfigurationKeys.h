#pragma once

#include <string>

namespace ZAV {
namespace Log {

struct AppenderValues;

/// What a key belongs to, by its prefix.
enum class KeySection {
    LOGGER,    ///< "logger.<name>.<key>"
    APPENDER,  ///< "appender.<name>", which declares the appender, or "appender.<name>.<key>"
    DISPATCHER ///< "zav.log.AsynchronousDispatcher.<key>"
};

/// The classes that read a key, as a set of bits.
enum KeyReaders : unsigned {
    READ_BY_LOGGERS = 1,
    READ_BY_STDOUT_APPENDER = 2,
    READ_BY_FILE_APPENDER = 4,
    READ_BY_SIMPLE_FILE_APPENDER = 8,
    READ_BY_DISPATCHER = 16,
    READ_BY_REGISTERED_CLASS = 32, ///< one that the application registers
    READ_BY_ROLLING_FILE_APPENDER = 64,
    READ_BY_LIVE_FILE_APPENDERS = READ_BY_FILE_APPENDER | READ_BY_ROLLING_FILE_APPENDER,
    READ_BY_FILE_APPENDERS = READ_BY_LIVE_FILE_APPENDERS | READ_BY_SIMPLE_FILE_APPENDER,
    READ_BY_APPENDERS = READ_BY_STDOUT_APPENDER | READ_BY_FILE_APPENDERS | READ_BY_REGISTERED_CLASS
};

/// How the value of a key is parsed.
enum class ValueForm {
    CLASS_NAME,       ///< of an appender
    LEVEL,            ///< `Level::fromString`; anything else is an error
    MESSAGE_TYPE,     ///< `messageTypeFromString`; anything else is an error
    PREFIXES,         ///< separated by spaces
    TEXT,             ///< taken as it is
    BOOLEAN,          ///< `readBoolean`; anything else counts as the default
    STREAM,           ///< `cout`, `cerr` or `clog`; anything else counts as the first
    OVERFLOW_RULE,    ///< `discard` or `block`; anything else counts as the first
    FLUSH_RULE,       ///< `line` or `batch`; anything else counts as the first
    PERIOD,           ///< `readPeriod`; a bad count is an error
    WHOLE_NUMBER,     ///< `Util::toInteger`; anything else is reported and left out
    LEADING_UNSIGNED, ///< `readLeadingUnsigned`; no number counts as the default. The needed key is its unit
    LEADING_SIGNED,   ///< `readLeadingSigned`; otherwise the same
    SIZE_UNIT,        ///< `readSizeUnit`
    BYTE_SIZE,        ///< `readSizeLimit`; anything else, and 0 or less, is reported and left out
    LIFETIME_UNIT,    ///< `readLifetimeUnit`
    FILE_MODE,        ///< `readFileMode`; anything else counts as absent
    LAYOUT,           ///< `readLayout`; anything else is an error
    COLUMNS,          ///< `readColumns`; anything else is an error
    SIZE_LIMIT,       ///< `readSizeLimit`; anything else is an error, as in the next four forms
    TIME_LIMIT,       ///< `readTimeLimit`
    COUNT_LIMIT,      ///< `readCountLimit`
    ROLL_MOMENT,      ///< `hour` or `midnight`
    COMPRESSION       ///< `none` or `gzip`
};

/// The default of a key.
struct DefaultValue {
    const char* text;
    bool isValue; ///< whether the text could be the key's value, with its unit; otherwise it is Markdown for
                  ///< a reader
};

/// A key that the library reads. The texts are those of the table in docs/configuration.md, in Markdown.
struct ConfigurationKey {
    KeySection section;
    const char* name; ///< the end of the key; empty for the key that declares an appender
    unsigned readers; ///< of `KeyReaders`
    ValueForm form;
    const char* requiredKey; ///< the key of the same section without which this one has no effect, or nullptr
    const char* values;      ///< what the value may be
    DefaultValue byDefault;
    const char* meaning; ///< one sentence

    /// Parses and stores a value of an appender, given the value of the needed key; nullptr for a key without
    /// a member of its own.
    /// \throw LogException or UtilException if the value is rejected
    void (*read)(AppenderValues& values, const std::string& text, const std::string& needed) = nullptr;
};

/// All keys, in the order of the documentation, which is also the order in which an appender's keys are read.
struct ConfigurationKeys {
    const ConfigurationKey* begin() const;
    const ConfigurationKey* end() const;
};

inline ConfigurationKeys configurationKeys() {
    return {};
}

/// \return the key of a section with that name; nullptr if there is none
const ConfigurationKey* findKey(KeySection section, const std::string& name);

/// \return the bit of `KeyReaders` of a class of appenders; 0 if the library has no such class
unsigned readerOfClass(const std::string& className);

/// \return the whole key, with `L` for the name of the logger and `A` for that of the appender
std::string genericKey(const ConfigurationKey& key);

/// \return the readers of a key in words
std::string describeReaders(const ConfigurationKey& key);

/// \return the default of a key, in Markdown
std::string describeDefault(const ConfigurationKey& key);

} // namespace Log
} // namespace ZAV
