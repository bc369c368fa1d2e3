#include "log/reentrancy/LibraryCall.h"

#include "log/commands/FailureReport.h"
#include "log/layout/UndeliveredMessage.h"
#include "log/message/MessageFields.h"
#include "platform/Process.h"
#include "platform/Threads.h"

#include <algorithm>
#include <new>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

thread_local ThreadRecord record{};

/// The only thread of a forked child has a new thread ID.
const bool forgetsIdInChild = (Platform::atFork(nullptr, [] { record.systemId = 0; }), true);

const DeferredMessages& madeAtLoad = DeferredMessages::instance();

} // namespace

ThreadRecord& threadRecord() noexcept {
    return record;
}

void querySystemId(ThreadRecord& thread) noexcept {
    thread.systemId = Platform::currentThreadId();
}

void LibraryCall::end() noexcept {
    if (hasDeferredMessages()) {
        DeferredMessages::instance().writeOwn();
    }
    record_.nestedReports = 0;
}

void Dispatch::showOpen() noexcept {
    for (const Dispatch* open = threadRecord().dispatch; open != nullptr; open = open->outer_) {
        showOnStandardError(SHOWN_AT_PROCESS_END, open->message_.fields());
    }
}

// Deferred messages

void DeferredMessages::keep(Logger& logger, const MessageFields& message, Write write) {
    ThreadRecord& thread = threadRecord();
    Messages one;
    one.push_back({&thread, thread.answeredReports, &logger, message.makeMessage(), write, false});
    Messages discarded;
    {
        const ScopedLock lock(messagesLock_);
        if (!closed_) {
            messages_.splice(messages_.end(), one);
            ++thread.deferredMessages;
            discarded = takeBeyondLimit(thread);
        }
    }
    for (const DeferredMessage& late : one) {
        showOnStandardError(SHOWN_AT_PROCESS_END, late.message);
    }
    showDiscarded(discarded);
}

DeferredMessages::Messages DeferredMessages::takeBeyondLimit(ThreadRecord& thread) noexcept {
    Messages taken;
    if (thread.deferredMessages > MAX_OF_A_THREAD) {
        taken.splice(taken.end(), messages_, findFirst(thread));
        --thread.deferredMessages;
        discarded_.fetch_add(1, std::memory_order_relaxed);
    }
    return taken;
}

/// Whatever reads standard error may log what is shown, and so discard the next message while this one is
/// being shown. That one is only counted, to prevent endless recursion.
void DeferredMessages::showDiscarded(const Messages& discarded) noexcept {
    ThreadRecord& thread = threadRecord();
    if (thread.showsDiscarded) {
        return;
    }
    thread.showsDiscarded = true;
    for (const DeferredMessage& message : discarded) {
        showOnStandardError(SHOWN_WHEN_DISCARDED, message.message);
    }
    thread.showsDiscarded = false;
}

void DeferredMessages::writeOwn() noexcept {
    const Platform::NoCancellation noCancellation;
    ThreadRecord& thread = threadRecord();
    while (thread.deferredMessages > 0) {
        Logger* logger = nullptr;
        const Write write = nextWrite(thread, logger);
        if (write == nullptr) {
            thread.deferredMessages = 0; // another thread has shown them at the end of the process
            return;
        }
        try {
            if (!write(*logger, !thread.isConsumer)) {
                return;
            }
        } catch (const std::bad_alloc&) {
            FailureCount::add(); // it may be unwritten, and cannot be reported
        } catch (...) {
            continue;
        }
    }
}

DeferredMessages::Write DeferredMessages::nextWrite(const ThreadRecord& thread, Logger*& logger) noexcept {
    const ScopedLock lock(messagesLock_);
    const auto first = findFirst(thread);
    if (closed_ || first == messages_.end()) {
        return nullptr;
    }
    logger = first->logger;
    return first->write;
}

const DeferredMessages::DeferredMessage* DeferredMessages::beginFirst() noexcept {
    ThreadRecord& thread = threadRecord();
    const ScopedLock lock(messagesLock_);
    const auto first = findFirst(thread);
    if (closed_ || first == messages_.end()) {
        return nullptr;
    }
    first->isBeingWritten = true;
    --thread.deferredMessages;
    return &*first;
}

void DeferredMessages::endFirst() noexcept {
    const ScopedLock lock(messagesLock_);
    const auto written = findFirst(threadRecord(), true);
    if (!closed_ && written != messages_.end()) {
        messages_.erase(written);
    }
}

DeferredMessages::Messages::iterator DeferredMessages::findFirst(const ThreadRecord& thread,
                                                                 bool isBeingWritten) {
    return std::find_if(messages_.begin(), messages_.end(), [&](const DeferredMessage& message) {
        return message.thread == &thread && message.isBeingWritten == isBeingWritten;
    });
}

void DeferredMessages::showAll() noexcept ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    {
        const ScopedLock lock(messagesLock_);
        closed_ = true;
    }
    for (const DeferredMessage& message : messages_) {
        showOnStandardError(SHOWN_AT_PROCESS_END, message.message);
    }
}

/// The forking thread may be writing one, which has to stay.
void DeferredMessages::forgetInChild() noexcept {
    ThreadRecord& thread = threadRecord();
    const ScopedLock lock(messagesLock_);
    messages_.remove_if([&thread](const DeferredMessage& message) {
        return message.thread != &thread || !message.isBeingWritten;
    });
    thread.deferredMessages = 0;
}

} // namespace Log
} // namespace ZAV
