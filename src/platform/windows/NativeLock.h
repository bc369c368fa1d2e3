#pragma once

#include "platform/Process.h"

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

    void lock() { EnterCriticalSection(&section_); }
    bool tryLock() { return TryEnterCriticalSection(&section_) != 0; }
    void unlock() { LeaveCriticalSection(&section_); }
    void awaitHolder() {
        lock();
        unlock();
    }
    bool isHeldOnce() const { return section_.RecursionCount == 1; }
    void beginBlockingSection() {} // no process forks here
    void endBlockingSection() {}

private:
    CRITICAL_SECTION section_;
};

} // namespace Platform
} // namespace ZAV
