#include "log/tree/TreeLock.h"

#include "platform/Fork.h"

namespace ZAV {
namespace Log {

Platform::CriticalSection& treeLock() {
    static Platform::CriticalSection& lock = *new Platform::CriticalSection(Platform::AWAITED_BY_FORK);
    return lock;
}

namespace {

/// A new logger makes a lock of its own while it holds this one, and a lock cannot be made while a fork deals
/// with all that there are: so the fork takes this one before.
struct ForkHandlers {
    ForkHandlers() {
        treeLock(); // so that no thread makes it while another one forks
        Platform::atFork(take, release, release);
    }

    static void take() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS { treeLock().lock(); }
    static void release() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS { treeLock().unlock(); }
};

const ForkHandlers registeredAtLoad;

} // namespace

} // namespace Log
} // namespace ZAV
