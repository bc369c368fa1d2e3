#pragma once

namespace ZAV {
namespace Platform {

/// Has a function called when the process ends by a return from `main` or by `exit`, while its other threads
/// may still run.
///
/// Where the system ends all other threads before a library hears of the end (Windows), the function is never
/// called: it could neither wait for a thread nor take a lock that a vanished thread held.
/// \param handler must not throw
void atProcessEnd(void (*handler)());

/// Keeps the library's code in memory until the process ends, whatever its user unloads: called before a
/// thread of the library's own starts, since that thread must not lose the code that it runs.
void keepLibraryLoaded();

} // namespace Platform
} // namespace ZAV
