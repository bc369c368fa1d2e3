#include "log/tree/TreeLock.h"

namespace ZAV {
namespace Log {

Platform::CriticalSection& treeLock() {
    static Platform::CriticalSection& lock = *new Platform::CriticalSection(Platform::AWAITED_BY_FORK);
    return lock;
}

namespace {

/// So that no thread makes it while another one forks.
const Platform::CriticalSection& madeAtLoad = treeLock();

} // namespace

} // namespace Log
} // namespace ZAV
