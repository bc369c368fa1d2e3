#include "log/reentrancy/PutOffMessages.h"

#include "log/layout/ShownMessage.h"
#include "log/message/MessageFields.h"
#include "log/reentrancy/ReportAnswer.h"
#include "platform/CancellationGuard.h"

#include <algorithm>
#include <utility>

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

void PutOffMessages::keep(Logger& logger, LogMessage message, Write write) {
    ThreadRecord& thread = threadRecord();
    Messages one;
    one.push_back({&thread, thread.answeredReports, &logger, std::move(message), write});
    const ScopedLock lock(messagesLock_);
    messages_.splice(messages_.end(), one);
    ++thread.putOffMessages;
}

void PutOffMessages::writeOwn() noexcept {
    const Platform::NoCancellation noCancellation;
    ThreadRecord& thread = threadRecord();
    for (Messages taken = takeFirst(thread); !taken.empty(); taken = takeFirst(thread)) {
        const PutOffMessage& putOff = taken.front();
        const ReportAnswer answer(putOff.answeredReports);
        try {
            putOff.write(*putOff.logger, putOff.message);
        } catch (...) {
            continue;
        }
    }
}

/// \return a list of the first message of a thread, or an empty one
PutOffMessages::Messages PutOffMessages::takeFirst(ThreadRecord& thread) noexcept {
    Messages taken;
    const ScopedLock lock(messagesLock_);
    const auto first =
        std::find_if(messages_.begin(), messages_.end(),
                     [&thread](const PutOffMessage& putOff) { return putOff.thread == &thread; });
    if (first != messages_.end()) {
        taken.splice(taken.end(), messages_, first);
        --thread.putOffMessages;
    } else {
        thread.putOffMessages = 0; // another thread has shown them, since the process ends
    }
    return taken;
}

void PutOffMessages::showAll() noexcept {
    Messages shown;
    {
        const ScopedLock lock(messagesLock_);
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
