#pragma once

#include "log/Level.h"
#include "log/Logger.h"
#include "log/tree/TreeLock.h"

namespace ZAV {
namespace Log {

class Appender;

/// What a `LogCapture` does to the loggers of its subtree while it lives. It changes no setting: the loggers
/// ask the captures that live whenever they work out what is in force.
class SubtreeCapture {
public:
    /// Begins; see the constructor of `LogCapture`.
    /// \param recorder gets the messages; lives longer than this object
    SubtreeCapture(Logger& logger, Level::LogLevel level, bool passesOn, Appender& recorder);
    ~SubtreeCapture();
    SubtreeCapture(const SubtreeCapture&) = delete;
    SubtreeCapture& operator=(const SubtreeCapture&) = delete;

    /// \return the level that a logger has to let through, or the other one if that is lower
    static Level::LogLevel lowestLevel(const Logger& logger, Level::LogLevel level)
        ZAV_LOG_REQUIRES(treeLock());

    /// \return whether an appender is that of a capture
    static bool isRecorder(const Appender* appender) ZAV_LOG_REQUIRES(treeLock());

private:
    void renewSubtree() ZAV_LOG_REQUIRES(treeLock());
    void awaitWalks();
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
