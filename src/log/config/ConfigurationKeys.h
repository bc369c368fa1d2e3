#pragma once

#include <string>
#include <vector>

namespace ZAV {
namespace Log {

/// What the beginning of a key says it is about.
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
    READ_BY_FILE_APPENDERS = READ_BY_FILE_APPENDER | READ_BY_SIMPLE_FILE_APPENDER,
    READ_BY_APPENDERS = READ_BY_STDOUT_APPENDER | READ_BY_FILE_APPENDERS
};

/// How the value of a key is understood.
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
    LEADING_UNSIGNED, ///< `readLeadingUnsigned`
    LEADING_SIGNED,   ///< `readLeadingSigned`
    SIZE_UNIT,        ///< `readSizeUnit`
    LIFETIME_UNIT,    ///< `readLifetimeUnit`
    FILE_MODE         ///< `readFileMode`; anything else counts as absent
};

/// A key that the library reads. The texts are those of the table in docs/configuration.md, in Markdown.
struct ConfigurationKey {
    KeySection section;
    const char* name; ///< the end of the key; empty for the key that declares an appender
    unsigned readers; ///< of `KeyReaders`
    ValueForm form;
    const char* neededKey; ///< the key of the same section without which this one has no effect, or nullptr
    const char* values;    ///< what the value may be
    const char* defaultValue; ///< what holds without the key
    const char* meaning;      ///< one sentence
};

/// \return all keys, in the order of the documentation
std::vector<ConfigurationKey> configurationKeys();

/// \return the bit of `KeyReaders` of a class of appenders; 0 if there is no such class
unsigned readerOfClass(const std::string& className);

/// \return the whole key, with `L` for the name of the logger and `A` for that of the appender
std::string genericKey(const ConfigurationKey& key);

/// \return the readers of a key in words
std::string describeReaders(const ConfigurationKey& key);

} // namespace Log
} // namespace ZAV
