#pragma once

#include "log/AppenderStatus.h"
#include "log/Level.h"
#include "log/LogStatistics.h"
#include "zav-util/Export.h"
#include "zav-util/TimeUtils.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

class Appender;
struct AppenderOptions;
class CommandListener;
class Logger;

/// The library's life cycle, and the command bus: named commands with a text argument, delivered to the
/// listeners that are registered under the name.
namespace LogManager {

/// Sets the loggers, the appenders and the asynchronous dispatcher up as the properties say.
///
/// Other threads may log meanwhile. Of `init`, `finish` and `reload`, which may be called from any thread,
/// one waits for the other. A bad value of a logger or of the dispatcher, or a bad name of a logger, is
/// reported on the standard error stream and leaves its setting as it was.
///
/// With a `queueFile` it first gives what earlier processes have left in it to the asynchronous appenders
/// that it sets up, and returns when that is written; what one of them cannot write stays in the file for it.
/// \return false if the library is set up already; the properties are then ignored
/// \throw LogException for a bad setting of an appender, and for a queue file that another process uses, that is
///        damaged or cannot be made. Whatever is thrown, `finish` has run before it
///        arrives, and a later `init` may succeed.
ZAV_LOG_API bool init(const Util::Properties& properties);

/// Reads a property file and sets the library up as it says. The file is checked in any case.
/// \throw UtilException if the file cannot be read or breaks the format
/// \throw LogException if the file name is empty, and as the other `init` does
ZAV_LOG_API bool init(const std::string& fileName);

/// Makes a class of appenders of the application known to the configuration: "appender.A = KafkaAppender"
/// then has an appender made by a call of the maker, in the thread that calls `init` or `reload` and with no
/// lock held that another call than these and `finish` takes. It is kept to the end of the process and known
/// from the next `init` or `reload` on.
///
/// What the maker throws, `init` or `reload` throws, as for a bad setting. In it `init` (unless the library
/// is set up), `reload` and `finish` throw LogException "LogManager::<name> must not be called while an
/// appender is made."
/// \param maker returns a new appender, not null, made with the options or a copy of them
/// \throw LogException if the class has been registered already, or is one of the library's own
ZAV_LOG_API void
registerAppenderClass(const std::string& className,
                      std::function<std::unique_ptr<Appender>(const AppenderOptions&)> maker);

/// Changes the library that `init` has set up to another configuration, while the program logs. Afterwards
/// levels, expirations, appenders and the dispatcher's settings are what a fresh process with that
/// configuration would have, whatever was set by calls and commands since.
///
/// - An appender whose keys are the same stays as it is, with its open file; a level that a command has
///   lowered goes back. Others are made first, and then change places with the old ones in one step. Each
///   message goes to the appenders of before or to those of afterwards, and what waits in the queue to those
///   of before. An appender that is made anew begins as after `init`: a `FileAppender` begins a new file,
///   when those that leave have written and closed theirs.
/// - No level passes through another on its way, and no command is issued. Levels of `setLevelFor` end.
/// - Appenders of the application, command listeners and servers stay.
/// - A bad value that `init` would report is reported, and leaves its setting as it was before.
///
/// It returns when the old appenders have written what was queued for them and are destroyed. It waits for a
/// call of an appender that is under way, and other threads log meanwhile; only for a moment, in which all
/// change places, each message waits. Where a synchronous appender takes over the file of an asynchronous
/// one, the queue is written first.
/// \throw LogException "LogManager::reload must not be called while logging." from an appender, a filter or a
///        command listener, "The library is not initialised." without `init`, and whatever `init` would
///        throw, and "The queue file cannot be changed by a reload." Nothing has changed then
ZAV_LOG_API void reload(const Util::Properties& properties);

/// \copydoc reload(const Util::Properties&)
/// \throw UtilException if the file cannot be read or breaks the format
ZAV_LOG_API void reload(const std::string& fileName);

/// The same for the file that was given to `init`, wherever the process has gone since.
/// \throw LogException "No file was given to init.", and what the other ones throw
ZAV_LOG_API void reload();

/// Takes down what `init` set up: empties the command bus, stops the consumer thread after the round that it
/// is in, detaches and destroys the appenders. Loggers and their levels stay. It may be called in any state,
/// but not from an appender or a command listener. Messages for asynchronous appenders that are logged while
/// the consumer is in its last round stay queued for the next `init`; if none comes, they are shown on the
/// standard error stream when the process ends. Call `flush` first, or use a `LogSession`.
ZAV_LOG_API void finish();

/// Has the asynchronous appenders written to at once, and waits until every message that was queued before
/// the call has been given to them or was discarded. A `finish` that follows loses nothing of what the thread
/// logged.
/// \param timeout 0 for no limit
/// \return true if so; false if the time is over, and at once where the wait could have no end: with messages
///         waiting inside an appender or a command listener, in the consumer thread, and where no consumer
///         runs
ZAV_LOG_API bool flush(const Util::TimeUtils::Time& timeout = Util::TimeUtils::Time());

/// \return what was counted since the library was loaded, all at one moment; logging calls do not wait for it
ZAV_LOG_API LogStatistics statistics();

/// Has the consumer thread serve an appender of the application, which was made with `synchronous = false`,
/// as it serves those of the configuration: the appender gets the messages of the loggers that list it
/// (`Logger::addAppender`). `finish` leaves it registered, and the consumer runs on for it. It gets nothing
/// of what earlier processes have left in a queue file.
/// \param appender not null, not owned; must live until it was removed
/// \throw std::exception if the consumer thread cannot be started
ZAV_LOG_API void addAsynchronousAppender(Appender* appender);

/// Takes an appender off the consumer thread. Once it returns, the appender is not used any more; what waits
/// in the queue is not given to it. Only inside an appender or a command listener it does not wait for a call
/// of the appender that another thread makes.
ZAV_LOG_API void removeAsynchronousAppender(Appender* appender);

/// \return the appenders that `init` or `reload` has set up, in the order of their creation, with their levels at this
///         moment. It may be called from anywhere and waits for nobody.
ZAV_LOG_API std::vector<AppenderStatus> appenders();

/// Lets a level through for a while: in a logger and all below it, also in those that are made meanwhile, and
/// in every appender of the configuration that has a level, for the messages of all loggers. Nothing is made
/// less verbose by it. When the time is over, each goes back to what it was, without anybody's help; a
/// message is judged by the time when it was logged, even if it comes out of the queue later.
///
/// Another call for the same logger takes the place of the first one, with a duration of 0 it ends it. So
/// does `Logger::setLevel` for the loggers that it sets, and with them for the appenders if the logger of
/// this call is among them. An expiration of the logger does not. Levels for different loggers add up: the
/// lowest holds. `finish` changes nothing about it, as it leaves the loggers' levels; `reload` ends it.
ZAV_LOG_API void setLevelFor(Logger& logger, Level::LogLevel level, const Util::TimeUtils::Time& duration);

/// \copydoc setLevelFor
/// \param loggerName as `LoggerFactory::getLogger` takes it, which makes a logger that does not exist; "root"
///        for the root
ZAV_LOG_API void setLevelFor(const std::string& loggerName, Level::LogLevel level,
                             const Util::TimeUtils::Time& duration);

/// Registers a listener behind those that the name already has, without a look for duplicates. It waits for a
/// command that another thread is delivering, and must not be called from a listener.
/// \param listener not null, not owned; must live until its name is unregistered or `finish` was called
ZAV_LOG_API void registerCommandListener(const std::string& name, CommandListener* listener);

/// Removes all listeners of a name; a name without listeners is no error. Once it returns, no other thread is
/// calling them.
ZAV_LOG_API void unregisterCommandListener(const std::string& name);

/// \return whether a name has a listener at this moment
ZAV_LOG_API bool hasCommandListener(const std::string& name);

/// Calls the listeners of a name, in the order of their registration and in the calling thread.
/// \throw whatever a listener throws; the listeners behind it are then not called
ZAV_LOG_API void command(const std::string& name, const std::string& argument);

} // namespace LogManager
} // namespace Log
} // namespace ZAV
