#include "log/tree/TreeLock.h"

#include "platform/Process.h"

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

Platform::CriticalSection& treeLock() {
    static Platform::CriticalSection& lock = *new Platform::CriticalSection(Platform::AWAITED_BY_FORK);
    return lock;
}

namespace {

/// Created at load time, so that no thread creates it while another one forks.
const Platform::CriticalSection& madeAtLoad = treeLock();

} // namespace

/// Held while the gate is closed. Never destroyed, since threads may still log while the process ends.
Platform::CriticalSection& DispatchGate::gateLock() {
    static Platform::CriticalSection& lock = *new Platform::CriticalSection;
    return lock;
}

/// The thread that had closed it does not exist in the child.
void DispatchGate::openInChild() {
    closed = false;
}

/// Initialised at load time, so that no thread creates the lock while another one forks.
const bool DispatchGate::isForked = [] {
    gateLock();
    Platform::atFork(nullptr, openInChild);
    return true;
}();

void DispatchGate::awaitOpen() {
    const ScopedLock lock(gateLock());
}

DispatchGate::Closed::Closed() {
    gateLock().lock();
    closed = true;
}

DispatchGate::Closed::~Closed() {
    closed = false;
    gateLock().unlock();
}

} // namespace Log
} // namespace ZAV
