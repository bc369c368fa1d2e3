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
    /// under which nothing is waited for but others of this kind, in whatever order, and the system: a slow
    /// file delays the fork, and other threads only for a moment, since a fork that waits for one lock holds
    /// no other. Who may wait for the system without end says so with `UnchangedInScope`.
    AWAITED_BY_FORK
};

/// Has functions called around every fork. To be called while the library is loaded. Where no process forks
/// (Windows), they are never called.
/// \param before called by the thread that is about to fork, without a lock of the library; must not throw.
///        Null for none
/// \param inChild called in the child, whose locks are as their rules say by then; must neither throw nor take
///        memory
void atFork(void (*before)(), void (*inChild)());

/// \return a number that is another one in a forked child than it was in the parent. A child that was made
///         past the C library has its parent's.
unsigned forkGeneration() noexcept;

/// \return the id of this process, without asking the system, which costs more than rendering a whole line. A
///         child that was made past the C library has its parent's.
int rememberedProcessId() noexcept;

} // namespace Platform
} // namespace ZAV
