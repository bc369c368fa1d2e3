#include "log/reentrancy/ThreadRecord.h"

#include "platform/Process.h"
#include "platform/Threads.h"

namespace ZAV {
namespace Log {

namespace {

thread_local ThreadRecord record{};

/// The one thread of a forked child is another one to the system.
const bool forgetsIdInChild = (Platform::atFork(nullptr, [] { record.systemId = 0; }), true);

} // namespace

ThreadRecord& threadRecord() noexcept {
    return record;
}

void askSystemId(ThreadRecord& thread) noexcept {
    thread.systemId = Platform::currentThreadId();
}

} // namespace Log
} // namespace ZAV
