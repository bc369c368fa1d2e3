#pragma once

namespace ZAV {
namespace Platform {

/// What a fork does about a lock that a thread other than the forking one holds. That thread does not exist
/// in the child, where its lock would never be free.
enum ForkRule {
    /// The fork does not wait, and the child finds the lock free. For a lock that may be held while appenders
    /// and command listeners run: the forking thread may be in one, and waiting could last for ever.
    FREED_IN_CHILD,

    /// The fork waits until it has the lock, so that the child finds whole what the lock guards. For a lock
    /// that is held for short steps only, in which no lock is made or destroyed, and only an older one of
    /// this kind is waited for: the fork takes the youngest first.
    AWAITED_BY_FORK
};

/// Has functions called around every fork of the process: in the parent before and after it, and in the
/// child. The locks are dealt with outside of them: `before` runs while none is taken yet, the other two when
/// all are as their rules say. Where no process forks (Windows), they are never called.
void atFork(void (*before)(), void (*inParent)(), void (*inChild)());

} // namespace Platform
} // namespace ZAV
