#pragma once

#include <optional>
#include <string>

namespace ZAV {
namespace Log {

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

} // namespace Log
} // namespace ZAV
