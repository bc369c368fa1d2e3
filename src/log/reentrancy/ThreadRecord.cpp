#include "log/reentrancy/ThreadRecord.h"

#include "platform/Fork.h"
#include "platform/Threads.h"

namespace ZAV {
namespace Log {

namespace {

thread_local ThreadRecord record{};

} // namespace

ThreadRecord& threadRecord() noexcept {
    return record;
}

std::uint64_t systemIdOf(ThreadRecord& thread) noexcept {
    const unsigned generation = Platform::forkGeneration();
    if (thread.systemId == 0 || thread.generation != generation) {
        thread.systemId = Platform::currentThreadId();
        thread.generation = generation;
    }
    return thread.systemId;
}

} // namespace Log
} // namespace ZAV
