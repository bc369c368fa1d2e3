#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ZAV {
namespace Platform {

/// \return the full path of the running program's executable file, as the system gives it
std::string executablePath();

/// \return the id of this process
int processId();

/// \return what the ids of this process are counted in, since an id means nothing elsewhere: a container has
///         ids of its own. Also 0 if the system does not say.
std::uint64_t processIdSpace();

/// \return whether a process of that id runs; another that got the id meanwhile counts as well. Where the
///         system does not tell a process that has ended from one that runs, it counts until its parent has
///         asked for its result.
bool isProcessAlive(int id);

/// Registers a function to be called when the process ends by a return from `main` or by `exit`, while other
/// threads may still be running.
///
/// Where the system ends all other threads before a library hears of the end (Windows), the function is never
/// called: it could neither wait for a thread nor take a lock that a vanished thread was holding.
/// \param handler must not throw
void atProcessEnd(void (*handler)());

/// \return whether the calling thread is the only one that the process has left but for those that serve, so
///         that nothing will ever happen in it again, and it goes on only because this thread does. To be
///         asked by a thread that is idle: it takes some 50 us. False if the system does not say, as on
///         Windows, where threads of its own come and go in every process.
bool isOnlyThread() noexcept;

/// Says that the calling thread serves: it waits for requests about what the process's other threads do, and
/// is no reason for the process to go on. The mark is the thread's name, which other libraries of the process
/// see as well. It has the thread's number, since a thread that this one makes inherits the name.
void markAsServing() noexcept;

/// Keeps the library's code in memory until the process ends, even if the application unloads it. To be
/// called before the library starts a thread, which must not lose the code that it is running.
void keepLibraryLoaded();

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

/// Zeroed memory that a forked child has in common with its parent: each sees what the other writes there.
/// What is kept in it must get along without locks, since a process may end at any moment, and be the same at
/// any address.
class ForkedMemory {
public:
    /// \throw std::bad_alloc
    explicit ForkedMemory(std::size_t size);
    ~ForkedMemory();
    ForkedMemory(const ForkedMemory&) = delete;
    ForkedMemory& operator=(const ForkedMemory&) = delete;

    void* get() const noexcept { return memory_; }

private:
    const std::size_t size_;
    void* const memory_;
};

/// Asks the system for the computer's name, which may be a fully qualified one.
/// \param name receives the name; untouched on failure
/// \return false if the system does not know it
bool readHostName(std::string& name);

} // namespace Platform
} // namespace ZAV
