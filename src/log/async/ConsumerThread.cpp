#include "log/async/ConsumerThread.h"

#include "log/async/AsynchronousAppenders.h"
#include "log/async/MessageQueue.h"
#include "platform/ThreadPriority.h"

#include <IceUtil/ThreadException.h>

namespace ZAV {
namespace Log {

ConsumerThread::ConsumerThread(MessageQueue& queue, AsynchronousAppenders& appenders)
    : queue_(queue), appenders_(appenders) {}

void ConsumerThread::stop() {
    queue_.stop(stopped_);
    getThreadControl().join();
}

/// A thread that is stopped before its first round makes that round at once, so that what was queued by then
/// is written as if the thread had been waiting already.
void ConsumerThread::run() {
    do {
        applyPriority();
        queue_.wait(stopped_);
        applyPriority();
        appenders_.deliver(queue_.takeBatch());
    } while (!stopped_);
}

/// The priority may be configured after the thread has started; it is in force when messages are written. No
/// message is held while it is set, since that may fail and end the thread.
void ConsumerThread::applyPriority() {
    const int priority = queue_.priority();
    if (priority == appliedPriority_) {
        return;
    }
    const int error = Platform::setCurrentThreadPriority(priority);
    if (error != 0) {
        throw IceUtil::ThreadSyscallException(__FILE__, __LINE__, error);
    }
    appliedPriority_ = priority;
}

} // namespace Log
} // namespace ZAV
