#pragma once

#include "platform/Process.h"

#include <atomic>
#include <cstdint>

// Leaves out the headers that define ERROR and other common words as macros.
#if !defined(NOGDI)
#define NOGDI
#endif
#if !defined(WIN32_LEAN_AND_MEAN)
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

namespace ZAV {
namespace Platform {

class NativeLock {
public:
    explicit NativeLock(ForkRule) { InitializeCriticalSection(&section_); }
    ~NativeLock() { DeleteCriticalSection(&section_); }
    NativeLock(const NativeLock&) = delete;
    NativeLock& operator=(const NativeLock&) = delete;

    void lock() {
        if (awaiting_.load(std::memory_order_relaxed) > 0 && !isHeldByCaller()) {
            Sleep(1); // lets the waiting thread go first
        }
        EnterCriticalSection(&section_);
    }
    bool tryLock() { return TryEnterCriticalSection(&section_) != 0; }
    void unlock() { LeaveCriticalSection(&section_); }
    void awaitHolder() {
        if (tryLock()) {
            unlock();
            return;
        }
        ++awaiting_;
        EnterCriticalSection(&section_);
        LeaveCriticalSection(&section_);
        --awaiting_;
    }
    bool isHeldOnce() const { return section_.RecursionCount == 1; }
    void beginBlockingSection() {} // no process forks here
    void endBlockingSection() {}

private:
    bool isHeldByCaller() const {
        return section_.OwningThread == reinterpret_cast<HANDLE>(std::uintptr_t{GetCurrentThreadId()});
    }

    CRITICAL_SECTION section_;
    std::atomic<unsigned> awaiting_{0}; ///< threads in `awaitHolder`
};

} // namespace Platform
} // namespace ZAV
