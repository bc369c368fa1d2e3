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

/// \return the namespace of this process's id: a container has ids of its own, which mean nothing outside it. 0 if the
///         system does not say.
std::uint64_t processIdSpace();

/// \return whether a process with that id is running; one that has reused the id counts too. Where the system cannot
///         tell a zombie from a running process, it counts until its parent has reaped it.
bool isProcessAlive(int id);

/// Registers a function to be called when `main` returns or `exit` is called, while other threads may still
/// be running.
///
/// Where the system kills all other threads before a library is notified (Windows), the function is never
/// called: it could neither wait for a thread nor take a lock that a killed thread was holding.
/// \param handler must not throw
void atProcessEnd(void (*handler)());

/// \return whether the process has no other threads left except service threads (see `markAsServing`), so that only
///         this thread keeps it alive. For idle threads: it takes some 50 us. False if the system does not
///         say, as on Windows, where system threads come and go in every process.
bool isOnlyThread() noexcept;

/// Marks the calling thread as a service thread: it waits for requests that concern other threads and must
/// not keep the process alive. The mark is the thread's name, so that other libraries in the process see it.
/// It contains the thread's id, since threads started by this one inherit the name.
void markAsServing() noexcept;

/// Keeps the library's code loaded until the process ends, even if the application unloads it. To be called
/// before the library starts a thread.
void keepLibraryLoaded();

/// How a fork treats a lock held by a thread other than the forking one. That thread does not exist in the
/// child, where the lock would never be released.
enum ForkRule {
    /// The fork does not wait, and the lock is free in the child. For a lock that may be held while appenders
    /// and command listeners run: the forking thread may be in one of them, and the wait might never end.
    FREED_IN_CHILD,

    /// The fork takes the lock, so that what it guards is consistent in the child. For a lock whose holders
    /// wait only for other locks of this kind, in any order, and for the system: a slow file delays the fork,
    /// but other threads only briefly, since a fork holds no lock while it waits for one. A holder that may
    /// block indefinitely uses `BlockingIoScope`.
    AWAITED_BY_FORK
};

/// Registers functions to be called around every fork. To be called while the library is being loaded. Where
/// processes do not fork (Windows), they are never called.
/// \param before called by the thread about to fork, before any lock is taken for the fork; must not throw; may be null
/// \param inChild called in the child, after the locks were treated by their rules; must neither throw nor allocate
void atFork(void (*before)(), void (*inChild)());

/// \return a number that differs between a forked child and its parent. A child created without the C library's `fork`
///         has its parent's.
unsigned forkGeneration() noexcept;

/// \return the cached id of this process: asking the system costs more than rendering a whole line. A child created
///         without the C library's `fork` gets its parent's.
int rememberedProcessId() noexcept;

/// Base class of a singleton that is created on first use and never destroyed: threads may still log while
/// the process ends.
///
/// The class's source file defines `const Object& madeAtLoad = Object::instance();`, so that it is never
/// created while another thread forks: in the child the initialisation would never complete.
template <typename Object>
class NeverDestroyed {
public:
    static Object& instance() {
        static Object& object = *new Object;
        return object;
    }
};

/// Zeroed memory shared between a forked child and its parent. Its content must work without locks, since a
/// process may die at any moment, and must be position-independent.
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

/// Reads the computer's host name, which may be fully qualified.
/// \param name receives the name; untouched on failure
/// \return false if the system does not say
bool readHostName(std::string& name);

} // namespace Platform
} // namespace ZAV
