#pragma once

namespace ZAV {
namespace Platform {

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

} // namespace Platform
} // namespace ZAV
