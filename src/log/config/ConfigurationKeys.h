#pragma once

#include <optional>
#include <string>

namespace ZAV {
namespace Log {

struct AppenderValues;

/// The classes of appenders: the values of "appender.<name>".
namespace AppenderClass {
constexpr char STDOUT[] = "StdoutAppender";
constexpr char FILE_SERIES[] = "FileAppender";
constexpr char SINGLE_FILE[] = "SimpleFileAppender";
constexpr char ROLLED_FILE[] = "RollingFileAppender";
} // namespace AppenderClass

/// The attributes of a logger: "logger.<name>.<attribute>".
namespace LoggerAttribute {
constexpr char LEVEL[] = "level";
constexpr char EXPIRATION[] = "expiration";
} // namespace LoggerAttribute

/// The settings of an appender that are also named outside the table: "appender.<name>.<setting>".
namespace AppenderSetting {
constexpr char ASYNCHRONOUS[] = "asynchronous";
constexpr char FILTERS[] = "filters";
constexpr char LEVEL[] = "level";
constexpr char EXPIRATION[] = "expiration";
constexpr char MESSAGE_TYPE[] = "message_type";
constexpr char LAYOUT[] = "layout";
constexpr char FIELDS[] = "fields";
constexpr char OSTREAM[] = "ostream";
constexpr char DIR[] = "dir";
constexpr char FILE_NAME[] = "file";
constexpr char FILE_NUMBER[] = "fileNumber";
constexpr char FILE_MAX_SIZE[] = "fileMaxSize";
constexpr char FILE_MAX_SIZE_UNIT[] = "fileMaxSizeUnit";
constexpr char FLUSH[] = "flush";
} // namespace AppenderSetting

/// The options of the asynchronous dispatcher: "zav.log.AsynchronousDispatcher.<option>".
namespace DispatcherOption {
constexpr char MAX_QUEUE_SIZE[] = "maxQueueSize";
constexpr char WAITING_PERIOD[] = "waitingPeriod";
constexpr char PRIORITY[] = "priority";
constexpr char OVERFLOW_RULE[] = "overflow";
constexpr char QUEUE_FILE[] = "queueFile";
constexpr char QUEUE_FILE_SIZE[] = "queueFileSize";
} // namespace DispatcherOption

constexpr char LOGGER_KEY_PREFIX[] = "logger.";
constexpr char APPENDER_KEY_PREFIX[] = "appender.";
constexpr char DISPATCHER_KEY_PREFIX[] = "zav.log.AsynchronousDispatcher.";

/// \return the name of the appender that a key declares, even with repeated dots; nothing for any other key
std::optional<std::string> declaredAppender(const std::string& key);

/// \return the key that declares an appender and names its class
std::string appenderKey(const std::string& appenderName);

/// \return the key of an appender's setting
std::string appenderKey(const std::string& appenderName, const std::string& setting);

/// \return the key of an option of the dispatcher
std::string dispatcherKey(const std::string& option);

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
    LEADING_UNSIGNED, ///< `readLeadingUnsigned`; no number counts as the default. The required key is its
                      ///< unit
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

    /// Parses and stores a value of an appender, given the value of the required key; nullptr for a key
    /// without a member of its own.
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

} // namespace Log
} // namespace ZAV
