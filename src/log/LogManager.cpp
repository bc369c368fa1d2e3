#include "log/LogManager.h"

#include "log/Appender.h"
#include "log/LogException.h"
#include "log/LogSession.h"
#include "log/LoggerFactory.h"
#include "log/appenders/AppenderRegistry.h"
#include "log/async/AsynchronousDispatcher.h"
#include "log/commands/CommandBus.h"
#include "log/commands/FailureReport.h"
#include "log/lifecycle/Reload.h"
#include "log/reentrancy/LibraryCall.h"
#include "log/tree/LoggerInside.h"
#include "log/tree/TreeChange.h"
#include "platform/CriticalSection.h"
#include "platform/Files.h"
#include "platform/Process.h"
#include "platform/Threads.h"
#include "zav-util/Properties.h"
#include "zav-util/StandardError.h"

#include <exception>
#include <utility>

namespace ZAV {
namespace Log {

namespace LogManager {

using Platform::ScopedLock;

namespace {

/// The state that `init` sets.
struct LifeCycle : Platform::NeverDestroyed<LifeCycle> {
    /// Held throughout `init`, `reload` and `finish`; taken before any other lock.
    Platform::CriticalSection lock;
    bool isInitialised ZAV_LOG_GUARDED_BY(lock) = false;
    std::string fileName ZAV_LOG_GUARDED_BY(lock);     ///< as it was given to `init`; empty if none was
    std::string absoluteName ZAV_LOG_GUARDED_BY(lock); ///< of that file

    /// \return the name of the file that was given to `init`: as it was given, for error messages, or the
    ///         absolute name if the given one denotes another file by now. Empty if none was given
    std::string fileOfInit() const ZAV_LOG_REQUIRES(lock) {
        return Platform::absolutePath(fileName) == absoluteName ? fileName : absoluteName;
    }
};

const LifeCycle& madeAtLoad = LifeCycle::instance();

/// \throw LogException in a thread that is making an appender
void rejectWhileCreatingAppenders(const char* call) {
    if (threadRecord().isMaking) {
        throw LogException("LogManager::" + std::string(call) +
                           " must not be called while an appender is made.");
    }
}

void configure(const Util::Properties& properties) {
    LoggerFactory::initLoggers(properties);
    AsynchronousDispatcher::instance().init(
        properties, [&properties] { AppenderRegistry::instance().initAppenders(properties); });
}

bool initFrom(const Util::Properties& properties, const std::string& fileName) {
    LifeCycle& cycle = LifeCycle::instance();
    const ScopedLock lock(cycle.lock);
    if (cycle.isInitialised) {
        return false;
    }
    rejectWhileCreatingAppenders("init");
    try {
        configure(properties);
        cycle.fileName = fileName;
        cycle.absoluteName = Platform::absolutePath(fileName);
    } catch (...) {
        finish();
        throw;
    }
    cycle.isInitialised = true;
    return true;
}

Util::Properties readFile(const std::string& fileName) {
    if (fileName.empty()) {
        throw LogException("File name parameter is empty.");
    }
    return Util::Properties(fileName);
}

/// Keeps command listeners during a reload, even those whose command has the name of a removed appender.
class KeptListeners {
public:
    KeptListeners() { threadRecord().keepsListeners = true; }
    ~KeptListeners() { threadRecord().keepsListeners = false; }
    KeptListeners(const KeptListeners&) = delete;
    KeptListeners& operator=(const KeptListeners&) = delete;
};

/// Changes the configuration to the one that a function returns, given the name of the file of `init`.
template <typename Source>
void reloadFrom(const Source& propertiesOf) {
    if (LibraryCall::isOpen()) {
        throw LogException("LogManager::reload must not be called while logging.");
    }
    LifeCycle& cycle = LifeCycle::instance();
    const ScopedLock lock(cycle.lock);
    if (!cycle.lock.isHeldOnce()) {
        throw LogException("LogManager::reload must not be called while an appender is made.");
    }
    const KeptListeners keptListeners;
    if (!cycle.isInitialised) {
        throw LogException("The library is not initialised.");
    }
    Reload(propertiesOf(cycle.fileOfInit())).run();
}

} // namespace

bool init(const Util::Properties& properties) {
    return initFrom(properties, std::string());
}

bool init(const std::string& fileName) {
    return initFrom(readFile(fileName), fileName);
}

void reload(const Util::Properties& properties) {
    reloadFrom([&properties](const std::string&) { return properties; });
}

void reload(const std::string& fileName) {
    reloadFrom([&fileName](const std::string&) { return readFile(fileName); });
}

void reload() {
    reloadFrom([](const std::string& fileOfInit) {
        if (fileOfInit.empty()) {
            throw LogException("No file was given to init.");
        }
        return readFile(fileOfInit);
    });
}

void registerAppenderClass(const std::string& className,
                           std::function<std::unique_ptr<Appender>(const AppenderOptions&)> maker) {
    AppenderRegistry::instance().registerClass(className, std::move(maker));
}

void finish() {
    const Platform::NoCancellation noCancellation; // it must not be left half done
    LifeCycle& cycle = LifeCycle::instance();
    const ScopedLock lock(cycle.lock);
    rejectWhileCreatingAppenders("finish");
    CommandBus::instance().clearCommandListeners();
    AsynchronousDispatcher::instance().finishConfigured();
    AppenderRegistry::instance().destroyAppenders();
    cycle.isInitialised = false;
}

bool flush(const Util::TimeUtils::Time& timeout) {
    return AsynchronousDispatcher::instance().flush(timeout);
}

LogStatistics statistics() {
    LogStatistics statistics = AsynchronousDispatcher::instance().statistics();
    const std::uint64_t neverQueued = DeferredMessages::instance().discarded();
    statistics.queued += neverQueued;
    statistics.discarded += neverQueued;
    statistics.failed = FailureCount::get();
    return statistics;
}

void addAsynchronousAppender(Appender* appender) {
    AsynchronousDispatcher::instance().registerAsynchronousAppender(appender, isListed);
}

void removeAsynchronousAppender(Appender* appender) {
    AsynchronousDispatcher::instance().unregisterAsynchronousAppender(appender);
}

std::vector<AppenderStatus> appenders() {
    return AppenderRegistry::instance().statuses();
}

void setLevelFor(Logger& logger, Level::LogLevel level, const Util::TimeUtils::Time& duration) {
    SubtreeLevel::setFor(logger, level, duration);
}

void setLevelFor(const std::string& loggerName, Level::LogLevel level,
                 const Util::TimeUtils::Time& duration) {
    Logger& logger =
        loggerName == "root" ? LoggerFactory::getRootLogger() : LoggerFactory::getLogger(loggerName);
    setLevelFor(logger, level, duration);
}

void registerCommandListener(const std::string& name, CommandListener* listener) {
    CommandBus::instance().registerListener(name, listener);
}

void unregisterCommandListener(const std::string& name) {
    CommandBus::instance().unregisterListeners(name);
}

bool hasCommandListener(const std::string& name) {
    return CommandBus::instance().hasListener(name);
}

void command(const std::string& name, const std::string& argument) {
    CommandBus::instance().deliver(name, argument);
}

} // namespace LogManager

namespace {

/// Enables failure notices before `init`, since an appender may already fail while it is set up. A session
/// that finds them enabled leaves them so.
class FailureNoticeScope {
public:
    FailureNoticeScope() {
        if (!wereEnabled_) {
            FailureNotice::setEnabled(true);
        }
    }
    ~FailureNoticeScope() {
        if (!isKept_ && !wereEnabled_) {
            FailureNotice::setEnabled(false);
        }
    }
    FailureNoticeScope(const FailureNoticeScope&) = delete;
    FailureNoticeScope& operator=(const FailureNoticeScope&) = delete;

    bool keepIf(bool isKept) { return isKept_ = isKept; }

private:
    const bool wereEnabled_ = FailureNotice::isEnabled();
    bool isKept_ = false;
};

template <typename Configuration>
bool initSession(const Configuration& configuration) {
    FailureNoticeScope notices;
    return notices.keepIf(LogManager::init(configuration));
}

} // namespace

LogSession::LogSession(const std::string& fileName) : hasInitialised_(initSession(fileName)) {}

LogSession::LogSession(const Util::Properties& properties) : hasInitialised_(initSession(properties)) {}

LogSession::~LogSession() {
    if (!hasInitialised_) {
        return;
    }
    const Platform::NoCancellation noCancellation; // nothing may be thrown out of here
    try {
        LogManager::flush();
        LogManager::finish();
        FailureNotice::setEnabled(false);
    } catch (const std::exception& exception) {
        Util::writeErrorLine(exception.what());
    }
}

} // namespace Log
} // namespace ZAV
