#pragma once

#include "log/Level.h"
#include "log/Logger.h"
#include "log/tree/TreeLock.h"

namespace ZAV {
namespace Log {

class Appender;

/// Effect of a `LogCapture` on the loggers of its subtree during its lifetime. It changes no setting: the
/// loggers consult the active captures whenever they compute their effective level and appenders.
class SubtreeCapture {
public:
    /// See the constructor of `LogCapture`.
    /// \param recorder gets the messages; must outlive this object
    SubtreeCapture(Logger& logger, Level::LogLevel level, bool passesOn, Appender& recorder);
    ~SubtreeCapture();
    SubtreeCapture(const SubtreeCapture&) = delete;
    SubtreeCapture& operator=(const SubtreeCapture&) = delete;

    /// \return the lowest level that a capture needs from the logger, or `level` if that is lower
    static Level::LogLevel lowestLevel(const Logger& logger, Level::LogLevel level)
        ZAV_LOG_REQUIRES(treeLock());

    /// \return whether an appender is the recorder of a capture
    static bool isRecorder(const Appender* appender) ZAV_LOG_REQUIRES(treeLock());

private:
    void renewSubtree() ZAV_LOG_REQUIRES(treeLock());
    void awaitDispatches();
    static bool isMuted(const Logger& logger) ZAV_LOG_REQUIRES(treeLock());

    static SubtreeCapture* newest ZAV_LOG_GUARDED_BY(treeLock());

    Logger& logger_;
    Level::LogLevel level_ ZAV_LOG_GUARDED_BY(treeLock());
    const bool passesOn_;
    Appender& recorder_;
    SubtreeCapture* older_ ZAV_LOG_GUARDED_BY(treeLock()) = nullptr;
};

} // namespace Log
} // namespace ZAV
