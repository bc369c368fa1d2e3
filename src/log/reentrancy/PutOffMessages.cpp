#include "log/reentrancy/PutOffMessages.h"

#include "log/layout/ShownMessage.h"
#include "log/message/FailureCount.h"
#include "log/message/MessageFields.h"
#include "platform/CancellationGuard.h"

#include <algorithm>
#include <new>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

PutOffMessages& PutOffMessages::instance() {
    static PutOffMessages& messages = *new PutOffMessages;
    return messages;
}

namespace {

/// So that no thread makes it while another one forks.
const PutOffMessages& madeAtLoad = PutOffMessages::instance();

} // namespace

void PutOffMessages::keep(Logger& logger, const MessageFields& message, Write write) {
    ThreadRecord& thread = threadRecord();
    Messages one;
    one.push_back({&thread, thread.answeredReports, &logger, message.makeMessage(), write});
    {
        const ScopedLock lock(messagesLock_);
        if (!closed_) {
            messages_.splice(messages_.end(), one);
            ++thread.putOffMessages;
            return;
        }
    }
    showOnStandardError(SHOWN_AT_PROCESS_END, one.front().message);
}

void PutOffMessages::writeOwn() noexcept {
    const Platform::NoCancellation noCancellation;
    ThreadRecord& thread = threadRecord();
    while (thread.putOffMessages > 0) {
        Logger* logger = nullptr;
        const Write write = nextWrite(thread, logger);
        if (write == nullptr) {
            thread.putOffMessages = 0; // another thread has shown them, since the process ends
            return;
        }
        try {
            if (!write(*logger, !thread.isConsumer)) {
                return;
            }
        } catch (const std::bad_alloc&) {
            FailureCount::add(); // it may not have been written, and cannot be reported
        } catch (...) {
            continue;
        }
    }
}

PutOffMessages::Write PutOffMessages::nextWrite(const ThreadRecord& thread, Logger*& logger) noexcept {
    const ScopedLock lock(messagesLock_);
    const auto first = findFirst(thread);
    if (first == messages_.end()) {
        return nullptr;
    }
    logger = first->logger;
    return first->write;
}

PutOffMessages::Messages PutOffMessages::takeFirst() noexcept {
    ThreadRecord& thread = threadRecord();
    Messages taken;
    const ScopedLock lock(messagesLock_);
    const auto first = findFirst(thread);
    if (first != messages_.end()) {
        taken.splice(taken.end(), messages_, first);
        --thread.putOffMessages;
    }
    return taken;
}

PutOffMessages::Messages::iterator PutOffMessages::findFirst(const ThreadRecord& thread) {
    return std::find_if(messages_.begin(), messages_.end(),
                        [&thread](const PutOffMessage& putOff) { return putOff.thread == &thread; });
}

void PutOffMessages::showAll() noexcept {
    Messages shown;
    {
        const ScopedLock lock(messagesLock_);
        closed_ = true;
        shown.swap(messages_);
    }
    for (const PutOffMessage& putOff : shown) {
        showOnStandardError(SHOWN_AT_PROCESS_END, putOff.message);
    }
}

void PutOffMessages::forgetInChild() noexcept {
    const ScopedLock lock(messagesLock_);
    messages_.clear();
    threadRecord().putOffMessages = 0;
}

} // namespace Log
} // namespace ZAV
