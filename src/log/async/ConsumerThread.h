#pragma once

#include "log/async/DispatcherSettings.h"

#include <IceUtil/Handle.h>
#include <IceUtil/Thread.h>
#include <atomic>

namespace ZAV {
namespace Log {

class AsynchronousAppenders;
class MessageQueue;

/// The thread that takes the queued messages, a batch a round, and writes them to the asynchronous appenders.
class ConsumerThread : public IceUtil::Thread {
public:
    /// \param queue must outlive the thread, as must `appenders`
    ConsumerThread(MessageQueue& queue, AsynchronousAppenders& appenders);

    /// Has the thread return after the round that it is in, and waits for that.
    void stop();

    /// In a forked child: has the thread return, if it is the one that forked.
    void endInChild() noexcept;

    /// The thread's own function. What is thrown in it, because the priority cannot be set for example, ends
    /// the thread alone, and is shown on the standard error stream.
    void run() override;

private:
    void makeRounds();
    void applyPriority();
    void deliverRound();

    MessageQueue& queue_;
    AsynchronousAppenders& appenders_;
    int appliedPriority_ = DEFAULT_PRIORITY_MARK; ///< used by the thread itself alone
    std::atomic<bool> stopped_{false};            ///< set under the queue's monitor
    bool isParents_ = false;                      ///< in a forked child, where the queue has no consumer yet
};

using ConsumerThreadPtr = IceUtil::Handle<ConsumerThread>;

} // namespace Log
} // namespace ZAV
