#include "log/async/QueueMonitor.h"

namespace ZAV {
namespace Log {

void QueueMonitor::lock() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    monitor_.lock();
}

void QueueMonitor::unlock() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    monitor_.unlock();
}

void QueueMonitor::wait() {
    monitor_.wait();
}

void QueueMonitor::timedWait(Util::TimeUtils::Time duration) {
    const Util::TimeUtils::Time second(1, Util::TimeUtils::SEC);
    const std::uint64_t seconds = duration.microseconds() / second.microseconds();
    monitor_.timedWait(IceUtil::Time::seconds(static_cast<IceUtil::Int64>(seconds)));
}

void QueueMonitor::notify() {
    monitor_.notify();
}

} // namespace Log
} // namespace ZAV
