#pragma once

namespace ZAV {
namespace Platform {

constexpr int THREAD_PRIORITY_LOWEST_VALUE = -2;
constexpr int THREAD_PRIORITY_NORMAL_VALUE = 0;
constexpr int THREAD_PRIORITY_HIGHEST_VALUE = 2;

/// Requests a priority for the calling thread.
///
/// If the user lacks the right to the requested priority, it is raised as far as the system allows, and the
/// call succeeds.
/// \param priority one of the three values above
/// \return 0, or the system's error number if the request failed
int setCurrentThreadPriority(int priority);

} // namespace Platform
} // namespace ZAV
