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
    monitor_->lock();
    ++depth_;
}

void QueueMonitor::unlock() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    --depth_;
    monitor_->unlock();
}

void QueueMonitor::wait() {
    const Waiting waiting(waiting_, depth_);
    monitor_->wait();
}

void QueueMonitor::timedWait(Util::TimeUtils::Time duration) {
    const Waiting waiting(waiting_, depth_);
    const std::uint64_t longest = Util::TimeUtils::Time(20, Util::TimeUtils::DAY).microseconds();
    const auto microseconds = static_cast<IceUtil::Int64>(std::min(duration.microseconds(), longest));
    monitor_->timedWait(IceUtil::Time::microSeconds(microseconds));
}

void QueueMonitor::notify() {
    if (waiting_ == 1) {
        monitor_->notify();
    } else if (waiting_ > 1) {
        monitor_->notifyAll();
    }
}

void QueueMonitor::renewInChild() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    monitor_->unlock(); // it may stay locked, but checking tools take note
    parents_ = monitor_.release();
    monitor_ = std::make_unique<Monitor>();
    waiting_ = 0;
    --depth_;
    for (int i = 0; i < depth_; ++i) {
        monitor_->lock();
    }
}

} // namespace Log
} // namespace ZAV
