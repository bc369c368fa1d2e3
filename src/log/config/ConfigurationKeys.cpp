#include "log/config/ConfigurationKeys.h"

#include "log/config/KeyNames.h"

#include <cstddef>
#include <iterator>

namespace ZAV {
namespace Log {

namespace {

const ConfigurationKey LOGGER_KEYS[] = {
    {KeySection::LOGGER, LoggerAttribute::LEVEL, READ_BY_LOGGERS, ValueForm::LEVEL, nullptr,
     "`AUDIT`, `ERROR`, `WARNING`, `INFO`, `DEBUG` or `TRACE`", "the parent's level; `WARNING` for the root",
     "sets the level of the logger and of all below it"},
    {KeySection::LOGGER, LoggerAttribute::EXPIRATION, READ_BY_LOGGERS, ValueForm::WHOLE_NUMBER, nullptr,
     "number of minutes", "the parent's; 0 for the root",
     "how long a level below `WARNING` lasts; 0: for ever"},
};

const ConfigurationKey COMMON_APPENDER_KEYS[] = {
    {KeySection::APPENDER, "", READ_BY_APPENDERS, ValueForm::CLASS_NAME, nullptr,
     "`StdoutAppender`, `FileAppender` or `SimpleFileAppender`", "", "declares the appender"},
    {KeySection::APPENDER, AppenderSetting::ASYNCHRONOUS, READ_BY_APPENDERS, ValueForm::BOOLEAN, nullptr,
     "`true` or `false`", "`false`", "whether the consumer thread writes it, not the thread that logs"},
    {KeySection::APPENDER, AppenderSetting::FILTERS, READ_BY_APPENDERS, ValueForm::PREFIXES, nullptr,
     "prefixes of logger names, separated by spaces", "all loggers",
     "writes only messages of loggers whose names begin with one of them"},
    {KeySection::APPENDER, AppenderSetting::LEVEL, READ_BY_APPENDERS, ValueForm::LEVEL, nullptr,
     "a level, as above", "all levels", "writes only messages of that level and more severe ones"},
    {KeySection::APPENDER, AppenderSetting::EXPIRATION, READ_BY_APPENDERS, ValueForm::PERIOD,
     AppenderSetting::LEVEL, "number and unit: `msec`, `sec`, `min`, `hour`, `day`", "the level is fixed",
     "a command may lower `level` for that long; 0: for good; without `level` it is not read"},
    {KeySection::APPENDER, AppenderSetting::MESSAGE_TYPE, READ_BY_APPENDERS, ValueForm::MESSAGE_TYPE, nullptr,
     "`LOG` or `CFG`", "both", "writes only ordinary messages, or only configuration messages"},
    {KeySection::APPENDER, AppenderSetting::ESCAPE, READ_BY_APPENDERS, ValueForm::BOOLEAN, nullptr,
     "`true` or `false`", "`false`",
     "keeps each message on one line, see [One message, one line](#one-message-one-line)"},
};

const ConfigurationKey OUTPUT_KEYS[] = {
    {KeySection::APPENDER, AppenderSetting::OSTREAM, READ_BY_STDOUT_APPENDER, ValueForm::STREAM, nullptr,
     "`cout`, `cerr` or `clog`", "`cout`", "the standard stream"},
    {KeySection::APPENDER, AppenderSetting::DIR, READ_BY_FILE_APPENDERS, ValueForm::TEXT, nullptr, "path",
     "`.`", "the folder, which must exist"},
    {KeySection::APPENDER, AppenderSetting::FILE_NAME, READ_BY_FILE_APPENDERS, ValueForm::TEXT, nullptr,
     "text", "`A`", "the file; for `FileAppender` the name to which a digit is added"},
    {KeySection::APPENDER, AppenderSetting::FILE_NUMBER, READ_BY_FILE_APPENDER, ValueForm::LEADING_UNSIGNED,
     nullptr, "number", "3", "the highest digit, so how many older files are kept; above 9 it counts as 9"},
    {KeySection::APPENDER, AppenderSetting::FILE_MAX_SIZE, READ_BY_FILE_APPENDER, ValueForm::LEADING_UNSIGNED,
     AppenderSetting::FILE_MAX_SIZE_UNIT, "number", "10 MB",
     "the size that a live file may have. **With its unit or not at all**"},
    {KeySection::APPENDER, AppenderSetting::FILE_MAX_SIZE_UNIT, READ_BY_FILE_APPENDER, ValueForm::SIZE_UNIT,
     AppenderSetting::FILE_MAX_SIZE, "`B`, `KB`, `MB` or `GB`", "", "the unit of `fileMaxSize`"},
    {KeySection::APPENDER, AppenderSetting::FILE_MAX_LIFETIME, READ_BY_FILE_APPENDER,
     ValueForm::LEADING_SIGNED, AppenderSetting::FILE_MAX_LIFETIME_UNIT, "number", "1 day",
     "how long a live file may be open; 0 or below: for ever. **With its unit or not at all**"},
    {KeySection::APPENDER, AppenderSetting::FILE_MAX_LIFETIME_UNIT, READ_BY_FILE_APPENDER,
     ValueForm::LIFETIME_UNIT, AppenderSetting::FILE_MAX_LIFETIME, "`m`, `h` or `d`", "",
     "the unit of `fileMaxLifetime`"},
    {KeySection::APPENDER, AppenderSetting::RECOVERY, READ_BY_FILE_APPENDER, ValueForm::PERIOD, nullptr,
     "number and unit, as for `expiration`", "never",
     "how often a failed or vanished live file is checked for and reopened, see [Recovery](#recovery); 0 or "
     "below: "
     "never"},
    {KeySection::APPENDER, AppenderSetting::FILE_MODE, READ_BY_FILE_APPENDERS, ValueForm::FILE_MODE, nullptr,
     "octal number up to 777", "666 less the process's mask",
     "the permissions of files that are made, see [Who may read the files](#who-may-read-the-files)"},
    {KeySection::APPENDER, AppenderSetting::FOLLOW_LINKS, READ_BY_FILE_APPENDERS, ValueForm::BOOLEAN, nullptr,
     "`true` or `false`", "`true`",
     "whether a symbolic link in the place of the file is followed, or an error"},
    {KeySection::APPENDER, AppenderSetting::FLUSH, READ_BY_FILE_APPENDERS, ValueForm::FLUSH_RULE, nullptr,
     "`line` or `batch`", "`line`",
     "whether an asynchronous appender makes one write for each line, or one for all lines of a round, see "
     "[One write for many lines](#one-write-for-many-lines)"},
};

const ConfigurationKey DISPATCHER_KEYS[] = {
    {KeySection::DISPATCHER, DispatcherOption::MAX_QUEUE_SIZE, READ_BY_DISPATCHER, ValueForm::WHOLE_NUMBER,
     nullptr, "number", "1024", "the limit of the queue: at most one message fewer waits; below 0: no limit"},
    {KeySection::DISPATCHER, DispatcherOption::WAITING_PERIOD, READ_BY_DISPATCHER, ValueForm::WHOLE_NUMBER,
     nullptr, "number of seconds", "2",
     "how long the consumer thread waits between two rounds; 0 or below: each message wakes it"},
    {KeySection::DISPATCHER, DispatcherOption::PRIORITY, READ_BY_DISPATCHER, ValueForm::WHOLE_NUMBER, nullptr,
     "number", "as the thread was created",
     "the consumer thread's priority: below 25 low, 25 normal, above 25 high"},
    {KeySection::DISPATCHER, DispatcherOption::OVERFLOW_RULE, READ_BY_DISPATCHER, ValueForm::OVERFLOW_RULE,
     nullptr, "`discard` or `block`", "`discard`",
     "what a full queue does: push the oldest message out, or let the thread that logs wait"},
};

template <std::size_t N>
void append(std::vector<ConfigurationKey>& all, const ConfigurationKey (&keys)[N]) {
    for (const ConfigurationKey& key : keys) {
        all.push_back(key);
    }
}

} // namespace

std::vector<ConfigurationKey> configurationKeys() {
    std::vector<ConfigurationKey> keys;
    append(keys, LOGGER_KEYS);
    append(keys, COMMON_APPENDER_KEYS);
    append(keys, OUTPUT_KEYS);
    append(keys, DISPATCHER_KEYS);
    return keys;
}

unsigned readerOfClass(const std::string& className) {
    if (className == AppenderClass::STDOUT) {
        return READ_BY_STDOUT_APPENDER;
    }
    if (className == AppenderClass::FILE_SERIES) {
        return READ_BY_FILE_APPENDER;
    }
    return className == AppenderClass::SINGLE_FILE ? READ_BY_SIMPLE_FILE_APPENDER : 0U;
}

std::string genericKey(const ConfigurationKey& key) {
    const std::string name = key.name;
    if (key.section == KeySection::LOGGER) {
        return std::string(LOGGER_KEY_PREFIX) + "L." + name;
    }
    if (key.section == KeySection::DISPATCHER) {
        return dispatcherKey(name);
    }
    return name.empty() ? appenderKey("A") : appenderKey("A", name);
}

std::string describeReaders(const ConfigurationKey& key) {
    switch (key.readers) {
    case READ_BY_LOGGERS:
        return "the loggers";
    case READ_BY_DISPATCHER:
        return "the dispatcher";
    case READ_BY_APPENDERS:
        return "all appenders";
    case READ_BY_FILE_APPENDERS:
        return "`FileAppender`, `SimpleFileAppender`";
    case READ_BY_STDOUT_APPENDER:
        return "`StdoutAppender`";
    case READ_BY_FILE_APPENDER:
        return "`FileAppender`";
    default:
        return "`SimpleFileAppender`";
    }
}

} // namespace Log
} // namespace ZAV
