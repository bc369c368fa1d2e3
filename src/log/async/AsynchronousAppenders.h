#pragma once

#include "log/async/MessageBatch.h"
#include "platform/CriticalSection.h"

#include <atomic>
#include <cstddef>
#include <list>

namespace ZAV {
namespace Log {

class Appender;

/// The appenders that the consumer thread writes to, in the order of their registration. It does not own
/// them.
class AsynchronousAppenders {
public:
    void add(Appender* appender);

    /// Removes every entry of an appender. Waits for a running delivery: once it returns, the appender is not
    /// called any more.
    /// \return true if no appender is left
    bool remove(Appender* appender);

    bool isEmpty();

    /// Gives every message of the batch to the first appender, then to the next, and so on. The caller must
    /// be in a `LibraryCall`. Nothing is thrown: what a command listener throws at a report is dropped.
    /// \return false if there is no appender
    bool deliver(const MessageBatch& batch) noexcept;

    /// Shows on the standard error stream what a running delivery has not given to every appender yet: the
    /// process ends, from inside an appender or a listener, and cannot wait for it.
    void showRestOfDelivery() noexcept;

    /// In a forked child: ends a delivery that the forking thread may be in. The messages are the parent's.
    void endDeliveryInChild() noexcept;

private:
    void deliverTo(Appender& appender, const MessageBatch& batch, bool isLast) noexcept
        ZAV_LOG_REQUIRES(appendersLock_);
    void setDelivered(const MessageBatch* batch) noexcept;

    Platform::CriticalSection appendersLock_; ///< held for a whole delivery, and by every change

    /// Held for each single step, so that a forked child finds the list whole.
    Platform::CriticalSection listLock_{Platform::AWAITED_BY_FORK};
    /// Changed under both locks: either one is enough to read it.
    std::list<Appender*> asynchronousAppenders_ ZAV_LOG_GUARDED_BY(appendersLock_);
    const MessageBatch* delivered_ ZAV_LOG_GUARDED_BY(listLock_) = nullptr; ///< null if no delivery runs
    /// Messages of it that the last appender has been given or is being given. Written by whoever delivers.
    std::atomic<std::size_t> given_{0};
    std::atomic<bool> isAbandoned_{false}; ///< in a forked child: the delivery must not go on
};

} // namespace Log
} // namespace ZAV
