#include "log/config/ConfigurationKeys.h"

#include "log/config/AppenderValues.h"
#include "log/config/ValueReaders.h"
#include "zav-util/Conversions.h"
#include "zav-util/UtilException.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <vector>

namespace ZAV {
namespace Log {

namespace {

using Values = AppenderValues;

/// \throw UtilException with the text if it has no value
template <typename Value>
Value orReject(const std::optional<Value>& value, const std::string& text) {
    if (!value) {
        throw Util::UtilException(text);
    }
    return *value;
}

/// \return a value, or nothing if the default applies
template <ValueForm form>
auto readAs(const std::string& text, [[maybe_unused]] const std::string& needed) {
    if constexpr (form == ValueForm::LEVEL) {
        return Level::fromString(text);
    } else if constexpr (form == ValueForm::MESSAGE_TYPE) {
        return messageTypeFromString(text);
    } else if constexpr (form == ValueForm::PREFIXES) {
        return Util::split(text, ' ');
    } else if constexpr (form == ValueForm::BOOLEAN) {
        return readBoolean(text);
    } else if constexpr (form == ValueForm::STREAM) {
        return readStream(text);
    } else if constexpr (form == ValueForm::FLUSH_RULE) {
        return text == "batch";
    } else if constexpr (form == ValueForm::PERIOD) {
        return readPeriod(text);
    } else if constexpr (form == ValueForm::LEADING_UNSIGNED) {
        return readSize(text, needed);
    } else if constexpr (form == ValueForm::LEADING_SIGNED) {
        return readLifetime(text, needed);
    } else if constexpr (form == ValueForm::FILE_MODE) {
        return readFileMode(text);
    } else if constexpr (form == ValueForm::LAYOUT) {
        return std::optional<LayoutName>(readLayout(text));
    } else if constexpr (form == ValueForm::COLUMNS) {
        return readColumns(text);
    } else if constexpr (form == ValueForm::SIZE_LIMIT) {
        return std::optional(orReject(readSizeLimit(text), text));
    } else if constexpr (form == ValueForm::TIME_LIMIT) {
        return std::optional(orReject(readTimeLimit(text), text));
    } else if constexpr (form == ValueForm::COUNT_LIMIT) {
        return std::optional(orReject(readCountLimit(text), text));
    } else if constexpr (form == ValueForm::ROLL_MOMENT) {
        return std::optional(orReject(readRollMoment(text), text));
    } else if constexpr (form == ValueForm::COMPRESSION) {
        return std::optional(orReject(readCompression(text), text));
    } else {
        static_assert(form == ValueForm::TEXT);
        return text;
    }
}

template <ValueForm form, auto member>
void readInto(AppenderValues& values, const std::string& text, const std::string& needed) {
    if (const std::optional value = readAs<form>(text, needed)) {
        values.*member = *value;
    }
}

constexpr DefaultValue value(const char* text) {
    return {text, true};
}

constexpr DefaultValue means(const char* text) {
    return {text, false};
}

/// A setting of appenders.
/// \param member where its value goes
template <ValueForm form, auto member>
constexpr ConfigurationKey setting(const char* name, unsigned readers, const char* values,
                                   DefaultValue byDefault, const char* meaning,
                                   const char* requiredKey = nullptr) {
    return {KeySection::APPENDER,  name, readers, form, requiredKey, values, byDefault, meaning,
            readInto<form, member>};
}

/// The unit of another setting, which is read with it.
constexpr ConfigurationKey unitOf(const char* number, const char* name, ValueForm form, const char* values,
                                  const char* meaning) {
    return {KeySection::APPENDER, name, READ_BY_FILE_APPENDER, form, number, values, means(""), meaning};
}

constexpr ConfigurationKey option(const char* name, ValueForm form, const char* values,
                                  DefaultValue byDefault, const char* meaning,
                                  const char* requiredKey = nullptr) {
    return {KeySection::DISPATCHER, name, READ_BY_DISPATCHER, form, requiredKey, values, byDefault, meaning};
}

constexpr ConfigurationKey KEYS[] = {
    {KeySection::LOGGER, LoggerAttribute::LEVEL, READ_BY_LOGGERS, ValueForm::LEVEL, nullptr,
     "`AUDIT`, `ERROR`, `WARNING`, `INFO`, `DEBUG` or `TRACE`",
     means("the parent's level; `WARNING` for the root"), "sets the level of the logger and of all below it"},
    {KeySection::LOGGER, LoggerAttribute::EXPIRATION, READ_BY_LOGGERS, ValueForm::WHOLE_NUMBER, nullptr,
     "number of minutes", means("the parent's; 0 for the root"),
     "how long a level below `WARNING` lasts; 0: for ever"},

    {KeySection::APPENDER, "", READ_BY_APPENDERS, ValueForm::CLASS_NAME, nullptr,
     "`StdoutAppender`, `FileAppender`, `SimpleFileAppender`, `RollingFileAppender`, or a class of the "
     "program's own",
     means(""), "declares the appender"},
    setting<ValueForm::BOOLEAN, &Values::asynchronous>(
        AppenderSetting::ASYNCHRONOUS, READ_BY_APPENDERS, "`true` or `false`", value("false"),
        "whether the consumer thread writes the messages, instead of the thread that logs them"),
    setting<ValueForm::PREFIXES, &Values::prefixes>(
        AppenderSetting::FILTERS, READ_BY_APPENDERS, "prefixes of logger names, separated by spaces",
        means("all loggers"),
        "writes only messages of loggers whose names begin with one of them: `net` takes `network` as well"),
    setting<ValueForm::LEVEL, &Values::level>(AppenderSetting::LEVEL, READ_BY_APPENDERS, "a level, as above",
                                              means("all levels"),
                                              "writes only messages of that level or above"),
    setting<ValueForm::PERIOD, &Values::expiration>(
        AppenderSetting::EXPIRATION, READ_BY_APPENDERS,
        "number, space and unit: `msec`, `sec`, `min`, `hour`, `day`", means("the level is fixed"),
        "how long a command may lower `level`; 0: for good; not read without `level`",
        AppenderSetting::LEVEL),
    setting<ValueForm::MESSAGE_TYPE, &Values::messageType>(
        AppenderSetting::MESSAGE_TYPE, READ_BY_APPENDERS, "`LOG` or `CFG`", means("both"),
        "writes only ordinary messages, or only configuration messages"),
    setting<ValueForm::BOOLEAN, &Values::escape>(
        "escape", READ_BY_APPENDERS, "`true` or `false`", value("false"),
        "keeps each message on one line, see [One message, one line](#one-message-one-line)"),
    setting<ValueForm::LAYOUT, &Values::layout>(AppenderSetting::LAYOUT, READ_BY_APPENDERS,
                                                "`plain`, `process`, `json` or `fields`",
                                                means("`process` for `SimpleFileAppender`, else `plain`"),
                                                "the form of a line, see [Layouts](#layouts)"),
    setting<ValueForm::COLUMNS, &Values::columns>(
        AppenderSetting::FIELDS, READ_BY_APPENDERS, "column names, separated by spaces", means("none"),
        "what a line of the layout `fields` shows, see [Layouts](#layouts)", AppenderSetting::LAYOUT),

    setting<ValueForm::STREAM, &Values::stream>(AppenderSetting::OSTREAM, READ_BY_STDOUT_APPENDER,
                                                "`cout`, `cerr` or `clog`", value("cout"),
                                                "the standard stream"),
    setting<ValueForm::TEXT, &Values::dir>(AppenderSetting::DIR, READ_BY_FILE_APPENDERS, "path", value("."),
                                           "the folder, which must exist"),
    setting<ValueForm::TEXT, &Values::file>(AppenderSetting::FILE_NAME, READ_BY_FILE_APPENDERS, "text",
                                            means("`A`; for `RollingFileAppender` `A.log`"),
                                            "the file name; `FileAppender` adds a digit to it"),
    setting<ValueForm::LEADING_UNSIGNED, &Values::fileNumber>(
        AppenderSetting::FILE_NUMBER, READ_BY_FILE_APPENDER, "number", value("3"),
        "the highest digit, so how many older files are kept; above 9 it counts as 9. **Each start begins a "
        "new file**, see [Rotated files](#rotated-files)"),
    setting<ValueForm::LEADING_UNSIGNED, &Values::fileMaxSize>(
        AppenderSetting::FILE_MAX_SIZE, READ_BY_FILE_APPENDER, "number", value("10 MB"),
        "the maximum size of a live file. **With its unit or not at all**",
        AppenderSetting::FILE_MAX_SIZE_UNIT),
    unitOf(AppenderSetting::FILE_MAX_SIZE, AppenderSetting::FILE_MAX_SIZE_UNIT, ValueForm::SIZE_UNIT,
           "`B`, `KB`, `MB` or `GB`", "the unit of `fileMaxSize`"),
    setting<ValueForm::LEADING_SIGNED, &Values::fileMaxLifetime>(
        "fileMaxLifetime", READ_BY_FILE_APPENDER, "number", value("1 d"),
        "how long a live file stays open; 0 or below: for ever. **With its unit or not at all**",
        "fileMaxLifetimeUnit"),
    unitOf("fileMaxLifetime", "fileMaxLifetimeUnit", ValueForm::LIFETIME_UNIT, "`m`, `h` or `d`",
           "the unit of `fileMaxLifetime`"),
    setting<ValueForm::PERIOD, &Values::recovery>(
        "recovery", READ_BY_LIVE_FILE_APPENDERS, "number and unit, as for `expiration`", means("never"),
        "how often a failed or vanished live file is checked for and reopened, see [Recovery](#recovery); 0 "
        "or below: never"),
    setting<ValueForm::FILE_MODE, &Values::fileMode>(
        "fileMode", READ_BY_FILE_APPENDERS, "octal number up to 777", means("666 minus the process's umask"),
        "the permissions of new files, see [Who may read the files](#who-may-read-the-files)"),
    setting<ValueForm::BOOLEAN, &Values::followLinks>(
        "followLinks", READ_BY_FILE_APPENDERS, "`true` or `false`", value("true"),
        "whether a symbolic link in place of the file is followed, or never written through, see [Who may "
        "read the files](#who-may-read-the-files)"),
    setting<ValueForm::FLUSH_RULE, &Values::writesBatches>(
        AppenderSetting::FLUSH, READ_BY_FILE_APPENDERS, "`line` or `batch`", value("line"),
        "whether an asynchronous appender makes one write for each line, or one for all lines of a round, "
        "see [One write for many lines](#one-write-for-many-lines)"),

    setting<ValueForm::SIZE_LIMIT, &Values::rollSize>(
        "rollSize", READ_BY_ROLLING_FILE_APPENDER, "number, space and unit: `B`, `KB`, `MB`, `GB`",
        means("no limit"),
        "the maximum size of a live file, see [Rolled files](#rolled-files); 0 or below: no limit"),
    setting<ValueForm::ROLL_MOMENT, &Values::rollAt>("rollAt", READ_BY_ROLLING_FILE_APPENDER,
                                                     "`hour` or `midnight`", means("never"),
                                                     "begins a new file with each hour or day of local time"),
    setting<ValueForm::COUNT_LIMIT, &Values::keepFiles>(
        "keepFiles", READ_BY_ROLLING_FILE_APPENDER, "number", means("no limit"),
        "how many rolled files are kept; 0 or below: no limit"),
    setting<ValueForm::SIZE_LIMIT, &Values::keepSize>(
        "keepSize", READ_BY_ROLLING_FILE_APPENDER, "number and unit, as for `rollSize`", means("no limit"),
        "the maximum total size of the live file and all rolled ones; 0 or below: no limit"),
    setting<ValueForm::TIME_LIMIT, &Values::keepTime>(
        "keepTime", READ_BY_ROLLING_FILE_APPENDER, "number and unit, as for `expiration`", means("no limit"),
        "how long a rolled file is kept; 0 or below: no limit"),
    setting<ValueForm::COMPRESSION, &Values::packs>(
        "compress", READ_BY_ROLLING_FILE_APPENDER, "`none` or `gzip`", value("none"),
        "whether rolled files are compressed, in a thread of its own"),

    option(DispatcherOption::MAX_QUEUE_SIZE, ValueForm::WHOLE_NUMBER, "number", value("1024"),
           "the size at which the queue is full: at most one message fewer waits; below 0: no limit"),
    option(DispatcherOption::WAITING_PERIOD, ValueForm::WHOLE_NUMBER, "number of seconds", value("2"),
           "how long the consumer thread waits between two rounds; 0 or below: each message wakes it"),
    option(DispatcherOption::PRIORITY, ValueForm::WHOLE_NUMBER, "number", means("as the thread was created"),
           "the consumer thread's priority: below 25 low, 25 normal, above 25 high"),
    option(DispatcherOption::OVERFLOW_RULE, ValueForm::OVERFLOW_RULE, "`discard` or `block`",
           value("discard"),
           "what a full queue does: discard the oldest message, or make the logging thread wait"),
    option(DispatcherOption::QUEUE_FILE, ValueForm::TEXT, "path", means("the queue is in memory"),
           "a file in which the queue outlives the process, until the next start or `zav-log recover` "
           "delivers it, see [A queue that survives](#a-queue-that-survives)"),
    option(DispatcherOption::QUEUE_FILE_SIZE, ValueForm::BYTE_SIZE, "number and unit, as for `rollSize`",
           value("16 MB"), "the capacity of `queueFile`, from 64 KB to 64 GB", DispatcherOption::QUEUE_FILE),
};

/// The library's own classes of appenders.
constexpr struct {
    const char* name;
    unsigned reader;
} CLASSES[] = {
    {AppenderClass::STDOUT, READ_BY_STDOUT_APPENDER},
    {AppenderClass::FILE_SERIES, READ_BY_FILE_APPENDER},
    {AppenderClass::SINGLE_FILE, READ_BY_SIMPLE_FILE_APPENDER},
    {AppenderClass::ROLLED_FILE, READ_BY_ROLLING_FILE_APPENDER},
};

} // namespace

const ConfigurationKey* ConfigurationKeys::begin() const {
    return std::begin(KEYS);
}

const ConfigurationKey* ConfigurationKeys::end() const {
    return std::end(KEYS);
}

const ConfigurationKey* findKey(KeySection section, const std::string& name) {
    const ConfigurationKeys keys = configurationKeys();
    const auto* const found = std::find_if(keys.begin(), keys.end(), [&](const ConfigurationKey& key) {
        return key.section == section && key.name == name;
    });
    return found == keys.end() ? nullptr : found;
}

unsigned readerOfClass(const std::string& className) {
    const auto* const found =
        std::find_if(std::begin(CLASSES), std::end(CLASSES),
                     [&className](const auto& known) { return known.name == className; });
    return found == std::end(CLASSES) ? 0U : found->reader;
}

std::optional<std::string> declaredAppender(const std::string& key) {
    const std::vector<std::string> tokens = Util::split(key, '.');
    const bool declaresAppender = tokens.size() == 2 && tokens[0] == "appender";
    return declaresAppender ? std::optional<std::string>(tokens[1]) : std::nullopt;
}

std::string appenderKey(const std::string& appenderName) {
    return APPENDER_KEY_PREFIX + appenderName;
}

std::string appenderKey(const std::string& appenderName, const std::string& setting) {
    return appenderKey(appenderName) + "." + setting;
}

std::string dispatcherKey(const std::string& option) {
    return DISPATCHER_KEY_PREFIX + option;
}

} // namespace Log
} // namespace ZAV
