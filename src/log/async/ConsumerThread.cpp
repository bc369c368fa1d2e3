#include "log/async/ConsumerThread.h"

#include "log/async/AsynchronousAppenders.h"
#include "log/async/MessageQueue.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/ThreadPriority.h"
#include "zav-util/StandardError.h"

#include <IceUtil/ThreadException.h>
#include <exception>

namespace ZAV {
namespace Log {

ConsumerThread::ConsumerThread(MessageQueue& queue, AsynchronousAppenders& appenders)
    : queue_(queue), appenders_(appenders) {}

void ConsumerThread::stop() {
    queue_.stop(stopped_);
    getThreadControl().join();
}

void ConsumerThread::endInChild() noexcept {
    stopped_ = true;
    isParents_ = true;
}

void ConsumerThread::run() {
    try {
        makeRounds();
    } catch (const std::exception& exception) {
        Util::writeErrorLine("IceUtil::Thread::run(): uncaught exception: ", exception.what());
    }
    if (!isParents_) {
        queue_.consumerEnds();
    }
}

/// A thread that is stopped before its first round makes that round at once, so that what was queued by then
/// is written as if the thread had been waiting already.
void ConsumerThread::makeRounds() {
    do {
        applyPriority();
        queue_.wait(stopped_);
        applyPriority();
        deliverRound();
    } while (!stopped_);
}

/// If an appender or a listener forks, the batch belongs to the parent, and the child does not finish its
/// delivery. At the end of the call, and so of the round, the thread writes what its appenders and listeners
/// put off; there it may wait for loggers.
void ConsumerThread::deliverRound() {
    MessageBatch batch = queue_.takeBatch();
    const LibraryCall call;
    const bool isDelivered = appenders_.deliver(batch);
    if (!isParents_) {
        queue_.endDelivery(batch, isDelivered);
    }
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
