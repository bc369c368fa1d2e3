#include "log/tree/SubtreeCapture.h"

#include "log/reentrancy/LibraryCall.h"
#include "log/tree/LoggerInside.h"

#include <algorithm>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

SubtreeCapture* SubtreeCapture::newest = nullptr;

SubtreeCapture::SubtreeCapture(Logger& logger, Level::LogLevel level, bool passesOn, Appender& recorder)
    : logger_(logger), level_(level), passesOn_(passesOn), recorder_(recorder) {
    {
        const ScopedLock lock(treeLock());
        logger.addAppender(&recorder); // allocates everything before anything changes
        older_ = newest;
        newest = this;
        renewSubtree();
    }
    awaitDispatches();
}

/// The level is reset first: messages that passed only because of it must be dispatched before the other
/// appenders get messages again.
SubtreeCapture::~SubtreeCapture() {
    {
        const ScopedLock lock(treeLock());
        level_ = Level::LEVEL_AUDIT;
        renewSubtree();
    }
    awaitDispatches();
    {
        const ScopedLock lock(treeLock());
        SubtreeCapture** link = &newest;
        while (*link != this) {
            link = &(*link)->older_;
        }
        *link = older_;
        renewSubtree();
    }
    logger_.removeAppender(&recorder_);
}

/// Waits for dispatches in progress, unless called from inside an appender or a listener.
void SubtreeCapture::awaitDispatches() {
    if (!passesOn_ && !LibraryCall::isOpen()) {
        logger_.inside_->waitForSubtree();
    }
}

void SubtreeCapture::renewSubtree() {
    const Util::TimeUtils::Time now = Util::TimeUtils::Time::now();
    logger_.inside_->forSubtree([now](Logger& logger) ZAV_LOG_REQUIRES(treeLock()) {
        logger.inside_->renewLevel(now);
        logger.inside_->appenders_.setMuted(isMuted(logger));
    });
}

Level::LogLevel SubtreeCapture::lowestLevel(const Logger& logger, Level::LogLevel level) {
    for (const SubtreeCapture* capture = newest; capture != nullptr; capture = capture->older_) {
        if (capture->level_ < level && logger.inside_->isBelow(capture->logger_)) {
            level = capture->level_;
        }
    }
    return level;
}

bool SubtreeCapture::isMuted(const Logger& logger) {
    for (const SubtreeCapture* capture = newest; capture != nullptr; capture = capture->older_) {
        if (!capture->passesOn_ && logger.inside_->isBelow(capture->logger_)) {
            return true;
        }
    }
    return false;
}

bool SubtreeCapture::isRecorder(const Appender* appender) {
    for (const SubtreeCapture* capture = newest; capture != nullptr; capture = capture->older_) {
        if (&capture->recorder_ == appender) {
            return true;
        }
    }
    return false;
}

} // namespace Log
} // namespace ZAV
