#include "log/async/AsynchronousDispatcher.h"

#include "log/commands/CommandBus.h"
#include "log/reentrancy/LibraryCall.h"
#include "log/reentrancy/PutOffMessages.h"
#include "platform/CancellationGuard.h"
#include "platform/Fork.h"
#include "platform/ProcessLifetime.h"
#include "platform/SignalGuard.h"

#include <exception>

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
    Platform::atFork({[] { return instance().queue_.tryLockForFork(); },
                      [] { instance().queue_.lockForFork(); }, [] { instance().queue_.unlockInParent(); },
                      [] { instance().beginInChild(); }});
}

void AsynchronousDispatcher::configure(const Util::Properties& properties) {
    queue_.configure(properties);
}

void AsynchronousDispatcher::registerAsynchronousAppender(Appender* appender) {
    appenders_.add(appender);
    const ScopedLock lock(threadLock_);
    if (!consumerThread_) {
        startConsumer();
    }
}

void AsynchronousDispatcher::unregisterAsynchronousAppender(Appender* appender) {
    const bool noneLeft = appenders_.remove(appender);
    if (noneLeft) {
        stop();
    }
}

void AsynchronousDispatcher::enqueue(const MessageFields& message, bool mayWait) {
    queue_.append(message, mayWait);
    if (wantsConsumer_.load(std::memory_order_relaxed)) {
        startWantedConsumer(false);
    }
}

bool AsynchronousDispatcher::flush(Util::TimeUtils::Time timeout) {
    // The consumer may be waiting for a lock that the thread holds inside an appender or a listener, or be
    // the thread itself.
    if (LibraryCall::isOpen()) {
        return statistics().waiting == 0;
    }
    if (wantsConsumer_) {
        startWantedConsumer(true);
    }
    return queue_.flush(timeout);
}

/// A thread that cannot be started now is tried again with the next message.
/// \param mayWait whether to wait for another thread that is starting or stopping it: with a logger's lock held,
///        that could last for ever
void AsynchronousDispatcher::startWantedConsumer(bool mayWait) noexcept {
    if (mayWait) {
        threadLock_.lock();
    } else if (!threadLock_.tryLock()) {
        return;
    }
    const ScopedLock lock(threadLock_, Platform::ADOPT_LOCK);
    try {
        if (!consumerThread_ && wantsConsumer_) {
            startConsumer();
        }
    } catch (const std::exception&) {
        return;
    }
}

void AsynchronousDispatcher::startConsumer() {
    Platform::keepLibraryLoaded();
    const Platform::NoSignals noSignals;
    const ConsumerThreadPtr thread = new ConsumerThread(queue_, appenders_);
    queue_.consumerStarts();
    try {
        thread->start();
    } catch (...) {
        queue_.consumerEnds();
        throw;
    }
    consumerThread_ = thread;
    wantsConsumer_ = false;
}

void AsynchronousDispatcher::stop() {
    const ScopedLock lock(threadLock_);
    wantsConsumer_ = false;
    if (consumerThread_) {
        consumerThread_->stop();
        consumerThread_ = nullptr;
    }
}

/// Writes what is still queued when the process ends without `LogManager::finish`. The listeners, which
/// belong to the application, may be gone by now.
///
/// A thread that ends the process from inside an appender or a listener holds locks that the consumer may be
/// waiting for; there the messages are shown on the standard error stream instead.
void AsynchronousDispatcher::endWithProcess() noexcept {
    const Platform::NoCancellation noCancellation;
    const bool mayWait = !LibraryCall::isOpen();
    const LibraryCall call;
    if (mayWait) {
        CommandBus::instance().clearCommandListeners();
        stop();
    }
    MessageBatch batch = queue_.close();
    const bool isDelivered = mayWait && appenders_.deliver(batch);
    if (!isDelivered) {
        appenders_.showRestOfDelivery();
        MessageQueue::showAll(batch);
    }
    queue_.endDelivery(batch, isDelivered);
    PutOffMessages::instance().showAll();
}

/// What the parent had queued is the parent's to write.
void AsynchronousDispatcher::beginInChild() noexcept {
    queue_.renewInChild();
    appenders_.endDeliveryInChild();
    PutOffMessages::instance().forgetInChild();
    const ScopedLock lock(threadLock_);
    if (consumerThread_) {
        consumerThread_->endInChild();
        parentsConsumer_ = consumerThread_;
        consumerThread_ = nullptr;
    }
    wantsConsumer_ = !appenders_.isEmpty();
}

} // namespace Log
} // namespace ZAV
