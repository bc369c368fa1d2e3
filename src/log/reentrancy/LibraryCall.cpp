#include "log/reentrancy/LibraryCall.h"

#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"
#include "log/reentrancy/DeferredMessages.h"
#include "platform/Process.h"
#include "platform/Threads.h"

namespace ZAV {
namespace Log {

namespace {

thread_local ThreadRecord record{};

/// The only thread of a forked child has a new thread ID.
const bool forgetsIdInChild = (Platform::atFork(nullptr, [] { record.systemId = 0; }), true);

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

} // namespace Log
} // namespace ZAV
