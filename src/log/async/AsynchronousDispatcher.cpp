#include "log/async/AsynchronousDispatcher.h"

#include "log/commands/CommandBus.h"
#include "log/commands/LoggingScope.h"
#include "platform/Process.h"
#include "platform/ProcessLifetime.h"

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

AsynchronousDispatcher& AsynchronousDispatcher::instance() {
    static AsynchronousDispatcher& dispatcher = *new AsynchronousDispatcher;
    return dispatcher;
}

namespace {

/// Made while the library is loaded, so that the process's own objects, which may log when they are
/// destroyed, are gone by the time that the dispatcher ends.
const AsynchronousDispatcher& madeAtLoad = AsynchronousDispatcher::instance();

} // namespace

AsynchronousDispatcher::AsynchronousDispatcher() {
    Platform::atProcessEnd([] { instance().endWithProcess(); });
}

void AsynchronousDispatcher::configure(const Util::Properties& properties) {
    queue_.configure(properties);
}

void AsynchronousDispatcher::registerAsynchronousAppender(Appender* appender) {
    appenders_.add(appender);
    const ScopedLock lock(threadLock_);
    if (consumerThread_) {
        return;
    }
    Platform::keepLibraryLoaded();
    const ConsumerThreadPtr thread = new ConsumerThread(queue_, appenders_);
    thread->start();
    consumerThread_ = thread;
    consumerProcess_ = Platform::processId();
}

void AsynchronousDispatcher::unregisterAsynchronousAppender(Appender* appender) {
    const bool noneLeft = appenders_.remove(appender);
    if (noneLeft) {
        stop();
    }
}

void AsynchronousDispatcher::enqueue(const LogMessage& message) {
    queue_.append(message);
}

void AsynchronousDispatcher::stop() {
    const ScopedLock lock(threadLock_);
    if (consumerThread_) {
        stopConsumer();
    }
}

void AsynchronousDispatcher::stopConsumer() {
    const bool runsInThisProcess = consumerProcess_ == Platform::processId();
    if (runsInThisProcess) {
        consumerThread_->stop();
    } else {
        queue_.takeBatch(); // what was queued before the fork is the parent's to write
    }
    consumerThread_ = nullptr;
}

/// A process that was forked off has the queue, but not the thread: the messages are the parent's to write.
bool AsynchronousDispatcher::isInForkedChild() {
    const ScopedLock lock(threadLock_);
    return consumerProcess_ != 0 && consumerProcess_ != Platform::processId();
}

/// Writes what is still queued when the process ends without `LogManager::finish`. The listeners, which
/// belong to the application, may be gone by now.
///
/// A thread that ends the process from inside an appender or a listener holds locks that the consumer may be
/// waiting for; there the messages are shown on the standard error stream instead.
void AsynchronousDispatcher::endWithProcess() noexcept {
    if (isInForkedChild()) {
        return;
    }
    const bool mayWait = !LoggingScope::isOpen();
    if (mayWait) {
        CommandBus::instance().clearCommandListeners();
        stop();
    }
    MessageBatch batch = queue_.close();
    if (mayWait && appenders_.deliver(batch)) {
        return;
    }
    while (batch.size() > 0) {
        MessageQueue::discard(batch.removeFront());
    }
}

} // namespace Log
} // namespace ZAV
