#include "log/async/QueueMonitor.h"

#include "platform/CancellationGuard.h"

#include <algorithm>
#include <cstdint>

namespace ZAV {
namespace Log {

namespace {

/// Counts a waiting thread, and keeps how often it has taken the monitor, which others take meanwhile. It
/// cannot be cancelled: the monitor would stay locked.
class Waiting {
public:
    Waiting(int& count, int& depth) : count_(count), depth_(depth), ownDepth_(depth) {
        ++count_;
        depth_ = 0;
    }
    ~Waiting() {
        --count_;
        depth_ = ownDepth_;
    }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

private:
    int& count_;
    int& depth_;
    const int ownDepth_;
    const Platform::NoCancellation noCancellation_;
};

} // namespace

void QueueMonitor::lock() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    place_.monitor.lock();
    ++depth_;
}

bool QueueMonitor::tryLock() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    if (!place_.monitor.tryLock()) {
        return false;
    }
    ++depth_;
    return true;
}

void QueueMonitor::unlock() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    --depth_;
    place_.monitor.unlock();
}

void QueueMonitor::wait() {
    const Waiting waiting(waiting_, depth_);
    place_.monitor.wait();
}

void QueueMonitor::timedWait(Util::TimeUtils::Time duration) {
    const Waiting waiting(waiting_, depth_);
    const std::uint64_t longest = Util::TimeUtils::Time(20, Util::TimeUtils::DAY).microseconds();
    const auto microseconds = static_cast<IceUtil::Int64>(std::min(duration.microseconds(), longest));
    place_.monitor.timedWait(IceUtil::Time::microSeconds(microseconds));
}

void QueueMonitor::notify() {
    if (waiting_ == 1) {
        place_.monitor.notify();
    } else if (waiting_ > 1) {
        place_.monitor.notifyAll();
    }
}

void QueueMonitor::renewInChild() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    place_.monitor.unlock(); // it may stay locked, but checking tools take note
    new (&place_.monitor) Monitor;
    waiting_ = 0;
    --depth_;
    for (int i = 0; i < depth_; ++i) {
        place_.monitor.lock();
    }
}

} // namespace Log
} // namespace ZAV
