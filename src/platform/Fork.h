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
    /// file delays the fork, and no other thread, since a fork that waits for one lock holds no other.
    AWAITED_BY_FORK
};

/// What a fork does about something that is no lock of ours and that it has to wait for all the same. The
/// forking thread calls them; they must neither throw nor take memory.
struct ForkHandlers {
    /// Takes it, if no other thread has it.
    /// \return false, without waiting, if one has
    bool (*tryTake)();
    void (*take)();    ///< waits for it; the thread holds nothing meanwhile that a fork waits for
    void (*release)(); ///< gives it back, in the parent
    void (*inChild)(); ///< in the child, whose locks are as their rules say by then; gives it back as well
};

/// Has every fork of the process take something along with the locks. Where no process forks (Windows), the
/// handlers are never called.
void atFork(const ForkHandlers& handlers);

/// \return a number that is another one in a forked child than it was in the parent. A child that was made
///         past the C library has its parent's.
unsigned forkGeneration() noexcept;

} // namespace Platform
} // namespace ZAV
