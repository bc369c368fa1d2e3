#pragma once

/// \file
/// Starts and stops the library, and changes it while the program runs. Where one scope will do, a
/// `LogSession` is simpler:
///
///     int main() {
///         ZAV::Log::LogManager::init("app.properties");
///         // ...
///         ZAV::Log::LogManager::flush(ZAV::Util::TimeUtils::Time(5, ZAV::Util::TimeUtils::SEC));
///         ZAV::Log::LogManager::finish();
///     }

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

/// The life cycle of the library, and the command bus, which delivers named commands with a text argument to
/// the listeners that are registered for the name.
namespace LogManager {

/// Initialises the library: sets up the loggers, the appenders and the asynchronous dispatcher from the
/// properties.
///
/// Other threads may log meanwhile. `init`, `finish` and `reload` may be called from any thread; each waits
/// for the others. An invalid value for a logger or the dispatcher, or an invalid name of a logger, is
/// reported on the standard error stream, and the setting is not changed.
///
/// With a `queueFile`, it first delivers the messages that earlier processes have left there to the
/// asynchronous appenders that it sets up, and returns when they are written. Those that an appender cannot
/// write stay in the file for it.
/// \return false if the library is initialised already; the properties are then ignored
/// \throw LogException for an invalid setting of an appender, and for a queue file that is in use by another
///        process, is damaged or cannot be created. If configuring fails, `finish` runs before the exception
///        is rethrown, which also unregisters all command listeners; a later `init` may succeed.
ZAV_LOG_API bool init(const Util::Properties& properties);

/// Initialises the library from a property file. The file is read and checked even if the library is
/// initialised already.
/// \throw UtilException if the file cannot be read or is malformed
/// \throw LogException if the file name is empty, and as the other `init` does
ZAV_LOG_API bool init(const std::string& fileName);

/// Registers an appender class of the application, so that the configuration can name it. If it says
/// "appender.A = KafkaAppender", the thread that calls `init` or `reload` calls the maker. Meanwhile that
/// thread holds no lock that any call other than `init`, `reload` and `finish` takes. The registration takes
/// effect with the next `init` or `reload`, and lasts until the process ends.
///
/// An exception from the maker is thrown by `init` or `reload`, as for an invalid setting. Within the maker,
/// `init` (unless the library is initialised), `reload` and `finish` throw LogException "LogManager::<name>
/// must not be called while an appender is made."
/// \param maker returns a new appender, not null, constructed from the options or a copy of them
/// \throw LogException if the class is registered already, or is one of the library's own
ZAV_LOG_API void
registerAppenderClass(const std::string& className,
                      std::function<std::unique_ptr<Appender>(const AppenderOptions&)> maker);

/// Changes the configuration of the initialised library while the program logs. Afterwards levels,
/// expirations, appenders and the dispatcher's settings are those of a new process with that configuration,
/// whatever calls and commands have set before.
///
/// - An appender whose keys have not changed stays as it is, with its open file; a level that a command has
///   lowered is restored. All other appenders are created first, and then replace the old ones in one step.
///   Each message goes either to the old appenders or to the new ones; messages in the queue go to the old
///   ones. A new appender starts as after `init`: a `FileAppender` begins a new file, once the appenders that
///   are removed have written and closed theirs.
/// - Each level changes directly to its new value, and no command is issued. Levels of `setLevelFor` end.
/// - Appenders of the application, command listeners and servers stay.
/// - An invalid value that `init` would report is reported, and the setting is not changed.
///
/// It returns when the old appenders have written what was queued for them and are destroyed. It waits for
/// calls of appenders in progress. Other threads may log meanwhile, and are blocked only while the appenders
/// are replaced. If a synchronous appender takes over the file of an asynchronous one, the queue is written
/// first.
/// \throw LogException "LogManager::reload must not be called while logging." from an appender, a filter or a
///        command listener; "The library is not initialised." without `init`; "The queue file cannot be
///        changed by a reload."; and whatever `init` would throw. Nothing has changed then.
ZAV_LOG_API void reload(const Util::Properties& properties);

/// \copydoc reload(const Util::Properties&)
/// \throw UtilException if the file cannot be read or is malformed
ZAV_LOG_API void reload(const std::string& fileName);

/// Reloads the file that was given to `init`, even if the working directory has changed since.
/// \throw LogException "No file was given to init.", and what the other overloads throw
ZAV_LOG_API void reload();

/// Shuts the library down: empties the command bus, stops the consumer thread after its current round, and
/// removes and destroys the appenders. Loggers and their levels stay. It may be called in any state, but not
/// from an appender or a command listener. Messages for asynchronous appenders that are logged during the
/// consumer's last round stay queued for the next `init`; if there is none, they are written to the standard
/// error stream when the process ends. Call `flush` first, or use a `LogSession`.
ZAV_LOG_API void finish();

/// Starts the delivery of the queue at once, and waits until every message that was queued before the call
/// has been given to the asynchronous appenders or discarded. A following `finish` loses nothing that this
/// thread has logged.
/// \param timeout how long to wait; 0 for no limit
/// \return true if all were delivered or discarded; false after the timeout. Where the wait might never end
///         (in an appender or a command listener, in the consumer thread, and if there is no such thread), it
///         returns at once: false if messages are waiting.
ZAV_LOG_API bool flush(const Util::TimeUtils::Time& timeout = Util::TimeUtils::Time());

/// \return a consistent snapshot of what was counted since the library was loaded; it does not block logging
///         calls
ZAV_LOG_API LogStatistics statistics();

/// Registers an appender of the application, constructed with `synchronous = false`, with the consumer
/// thread, which then serves it like those of the configuration: the appender gets the messages of the
/// loggers that it is added to (`Logger::addAppender`). `finish` leaves it registered, and the consumer keeps
/// running for it. It does not get what earlier processes have left in a queue file.
/// \param appender not null, not owned; must outlive its registration
/// \throw std::exception if the consumer thread cannot be started
ZAV_LOG_API void addAsynchronousAppender(Appender* appender);

/// Unregisters an appender from the consumer thread. Once it returns, the appender is no longer used; it does
/// not get messages that are still queued. If it is called from an appender or a command listener, it does
/// not wait for a call of the appender in another thread.
ZAV_LOG_API void removeAsynchronousAppender(Appender* appender);

/// \return the appenders that `init` or `reload` has set up, in the order of their creation, with their
///         present levels. It may be called from anywhere and does not block.
ZAV_LOG_API std::vector<AppenderStatus> appenders();

/// Lets a level through for a limited time: in a logger and all loggers below it, including those that are
/// created meanwhile, and in every appender of the configuration that has a level, for the messages of all
/// loggers. It never makes anything less verbose. When the time is over, each returns to its own level
/// automatically. A message is judged by when it was logged, even if it is delivered later.
///
/// Another call for the same logger replaces the first one; a duration of 0 ends the first one.
/// `Logger::setLevel` ends it for the loggers that it sets, and for the appenders if the logger of this call
/// is one of those. The expiration of a logger's level does not end it. If several levels apply, the lowest
/// wins. `finish` does not end it, as it does not change the levels of loggers; `reload` does.
ZAV_LOG_API void setLevelFor(Logger& logger, Level::LogLevel level, const Util::TimeUtils::Time& duration);

/// \copydoc setLevelFor
/// \param loggerName as for `LoggerFactory::getLogger`, which creates a logger that does not exist; "root"
///        for the root logger
ZAV_LOG_API void setLevelFor(const std::string& loggerName, Level::LogLevel level,
                             const Util::TimeUtils::Time& duration);

/// Registers a listener for a command, after the existing ones; duplicates are not detected. It waits for a
/// delivery in another thread, and must not be called from a listener.
/// \param listener not null, not owned; must outlive its registration, which `unregisterCommandListener` and
///        `finish` end
ZAV_LOG_API void registerCommandListener(const std::string& name, CommandListener* listener);

/// Unregisters all listeners for a command; it is not an error if there are none. Once it returns, no other
/// thread is calling them.
ZAV_LOG_API void unregisterCommandListener(const std::string& name);

/// \return whether the command has a listener at this moment
ZAV_LOG_API bool hasCommandListener(const std::string& name);

/// Issues a command: calls its listeners in the calling thread, in the order of their registration.
/// \throw whatever a listener throws; the remaining listeners are then not called
ZAV_LOG_API void command(const std::string& name, const std::string& argument);

} // namespace LogManager
} // namespace Log
} // namespace ZAV
