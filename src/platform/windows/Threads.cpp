#include "platform/Threads.h"

#include "platform/Process.h"

#include <windows.h>

namespace ZAV {
namespace Platform {

NoCancellation::NoCancellation() noexcept {
    static_cast<void>(before_);
}

NoCancellation::~NoCancellation() = default;

void actOnCancellation() {
    // Threads cannot be cancelled here.
}

struct NoSignals::Mask {};

NoSignals::NoSignals() = default;

NoSignals::~NoSignals() = default;

bool hasFineTimer() noexcept {
    return false;
}

bool sleepBriefly() noexcept {
    return false;
}

std::uint64_t currentThreadId() noexcept {
    return GetCurrentThreadId();
}

static_assert(THREAD_PRIORITY_LOWEST_VALUE == THREAD_PRIORITY_LOWEST &&
                  THREAD_PRIORITY_NORMAL_VALUE == THREAD_PRIORITY_NORMAL &&
                  THREAD_PRIORITY_HIGHEST_VALUE == THREAD_PRIORITY_HIGHEST,
              "the priorities are the system's own numbers");

int setCurrentThreadPriority(int priority) {
    if (SetThreadPriority(GetCurrentThread(), priority)) {
        return 0;
    }
    return static_cast<int>(GetLastError());
}

ThreadSlot::ThreadSlot(void (*destroy)(void* object)) {
    keepLibraryLoaded(); // the system calls `destroy` when a thread ends
    key_ = FlsAlloc(destroy);
    isValid_ = key_ != FLS_OUT_OF_INDEXES;
}

void* ThreadSlot::get() const noexcept {
    return isValid_ ? FlsGetValue(key_) : nullptr;
}

bool ThreadSlot::set(void* object) noexcept {
    return isValid_ && FlsSetValue(key_, object) != 0;
}

} // namespace Platform
} // namespace ZAV
